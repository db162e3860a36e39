// SPDX-License-Identifier: MIT
//
// Starts the page: reads the trace, then shows the view that the address asks for.
import type { App } from './app';
import { findAreas } from './areas';
import { h, replace, visible } from './dom';
import { flameView } from './flame';
import { overviewView } from './overview';
import { functionsView } from './functions';
import { Shell, type ViewChoice } from './shell';
import { errorsView } from './errors';
import { eventKinds, eventsView } from './events';
import { headersView } from './headers';
import { includesView } from './includes';
import { outputView } from './output';
import { sqlView } from './sql';
import { Kind, indexOf, readTrace, type Trace } from './trace';
import { treeView } from './tree';
import { Values } from './values';
import { waitingCalls } from './waits';

// Calls that wait, and queries of functions that are not known as such.
function waitsIn(trace: Trace): number {
  const calls = new Set(waitingCalls(trace).map(({ index }) => index));
  for (const { id } of trace.summary.sql.calls) if (indexOf(trace, id) >= 0) calls.add(indexOf(trace, id));
  return calls.size;
}

function filesIn(trace: Trace): number {
  return new Set(trace.name.filter((_, i) => trace.kind[i] === Kind.include)).size;
}

function viewsOf(trace: Trace): ViewChoice[] {
  const many = new Array<number>(10).fill(0);
  for (let i = 0; i < trace.count; ++i) ++many[trace.kind[i]];
  const { exceptions } = trace.summary;
  const uncaught = exceptions.filter((each: { uncaught: boolean }) => each.uncaught).length;
  const wrong = many[Kind.error] + uncaught;
  return [
    { key: 'overview', title: 'Overview', make: overviewView },
    { key: 'flame', title: 'Flame graph', make: flameView },
    { key: 'tree', title: 'Tree', make: treeView },
    { key: 'functions', title: 'Functions', make: functionsView },
    { key: 'sql', title: 'SQL & I/O', many: waitsIn(trace), make: sqlView },
    { key: 'output', title: 'Output', many: many[Kind.write], make: outputView },
    { key: 'headers', title: 'Headers', many: many[Kind.header], make: headersView },
    // Exceptions that were caught are no errors.
    wrong > 0 || exceptions.length === 0
      ? { key: 'errors', title: 'Errors', many: wrong, make: errorsView }
      : { key: 'errors', title: 'Exceptions', many: exceptions.length, make: errorsView },
    { key: 'includes', title: 'Includes', many: filesIn(trace), make: includesView },
    {
      key: 'events',
      title: 'Events',
      many: eventKinds.reduce((sum, kind) => sum + many[kind], 0),
      make: eventsView,
    },
  ];
}

function fail(error: unknown): void {
  const said = error instanceof Error ? error.message : String(error);
  replace(
    document.getElementById('app')!,
    h(
      'div',
      { class: 'failed', role: 'alert' },
      h('h1', null, 'This report cannot be shown'),
      h('p', null, visible(said)),
      h(
        'p',
        null,
        'It may not have arrived whole. Make it again with “cttool report”, or open it in a browser of 2023 or later.',
      ),
    ),
  );
}

async function start(): Promise<void> {
  const trace = await readTrace();
  document.title = visible(trace.meta.title || trace.meta.trace);
  findAreas(trace);
  const app: App & { start(): void } = new Shell(trace, new Values(trace), viewsOf(trace));
  app.start();
  performance.mark('ct-first-view');
}

start().catch(fail);
