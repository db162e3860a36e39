// SPDX-License-Identifier: MIT
//
// The overview: what `cttool summary` says, each thing with a link to where it is shown.
import type { App, View } from './app';
import { h, replace, text, visible, type Child } from './dom';
import { bytes, count, many, ms, percent, signedBytes } from './format';
import { callCell, idLink, nodeLink, short, tailed } from './links';
import { areasCard, hotCard } from './overview_hot';
import { bar, bars, card, openLink, placeNote } from './overview_parts';
import { cutCard, exceptionsCard, notices, trouble } from './overview_trouble';
import { timeline } from './timeline';
import { indexOf, nameOf, type Trace } from './trace';
import { waitingCalls } from './waits';

function factsCard(app: App): HTMLElement {
  const { meta, summary } = app.trace;
  const { request } = summary;
  const facts: [string, Child][] = [
    ['URL', request.url && text(request.url)],
    ['Trace', text(meta.trace)],
    ['Status', request.status ? String(request.status) : null],
    ['Output', request.bytes_out ? openLink(app, 'output', bytes(request.bytes_out)) : null],
    ['Duration', ms(request.total_ns)],
    ['Memory', `${bytes(request.memory_peak)} at most`],
    ['Calls', openLink(app, 'functions', `${count(request.calls)}, ${count(request.depth)} deep`)],
    ['Started', request.started && request.started.replace('T', ' ').replace(/\.(\d{3})\d*Z?$/, '.$1 UTC')],
    ['PHP API', request.php_api || null],
    ['Request', request.request_id ?? null],
    ['Made by', meta.made_by],
  ];
  return card(
    'Request',
    'wide',
    h(
      'dl',
      { class: 'facts across' },
      facts
        .filter(([, what]) => what !== null && what !== '')
        .map(([title, what]) => h('div', null, h('dt', null, title), h('dd', null, what))),
    ),
    h(
      'p',
      { class: 'soft', style: { margin: '8px 0 0' } },
      'This page holds arguments, headers and output as they were recorded.',
    ),
  );
}

interface Step {
  id: number;
  kind: string;
  function: string | null;
  total_ns: number;
  growth: number;
  file: string | null;
  line: number | null;
}

// Also of one that the page does not have.
function stepName(trace: Trace, step: Step): string {
  const index = indexOf(trace, step.id);
  return index >= 0 ? nameOf(trace, index) : (step.function ?? step.kind);
}

// Where the way loses most at once: its time is shared by many nodes there.
function spread(app: App, way: Step[]): Child {
  const { trace } = app;
  const lost = (i: number) => way[i].total_ns - (way[i + 1]?.total_ns ?? way[i].total_ns);
  let at = -1;
  for (let i = 0; i < way.length; ++i)
    if (lost(i) > way[i].total_ns / 2 && (at < 0 || lost(i) > lost(at))) at = i;
  const index = at < 0 ? -1 : indexOf(trace, way[at].id);
  if (index < 0) return null;
  let inside = 0;
  for (let i = index + 1; i <= trace.last[index]; i = trace.last[i] + 1) ++inside;
  const rest = `: ${ms(trace.own[index])} of its own, the rest shared by ${many(inside, 'node')} directly inside it.`;
  return h('p', { class: 'soft', style: { marginTop: '6px' } }, 'It spreads in ', nodeLink(app, index, short(nameOf(trace, index))), rest);
}

// Steps that only hand on what the one above took are left away.
function wayCard(app: App): Child {
  const { trace } = app;
  const way = trace.summary.slowest_way as Step[];
  const shown = way
    .filter(
      (step, i) => i > 0 && (i === way.length - 1 || way[i + 1].total_ns < 0.9 * step.total_ns || i === 1),
    )
    .slice(0, 12);
  if (shown.length === 0) return null;
  return card(
    'Slowest way down',
    '',
    bars(
      shown.map((step) =>
        bar(
          step.total_ns,
          trace.whole,
          idLink(app, step.id, short(stepName(trace, step))),
          step.file === null ? null : tailed(placeNote(step.file, null), step.line ? `:${step.line}` : ''),
        ),
      ),
    ),
    spread(app, way),
    h('p', { class: 'soft' }, openLink(app, 'flame', 'See it in the flame graph')),
  );
}

const results: Record<string, string> = {
  same: 'same result',
  handle: 'same handle',
  none: 'no result',
  unknown: 'result unknown',
  differ: 'results differ',
};

function againCard(app: App): Child {
  const { trace } = app;
  const whole = trace.whole;
  interface Again {
    first: number;
    function?: string;
    text?: string;
    calls: number;
    spare_ns: number;
    results?: string;
  }
  const worth = (row: Again) => row.spare_ns >= whole / 100;
  const rows = [
    ...(trace.summary.repeats as Again[]).filter(worth),
    ...(trace.summary.like_queries as Again[]).filter(worth),
  ].slice(0, 8);
  if (rows.length === 0) return null;
  return card(
    'Again and again',
    'again',
    h(
      'p',
      { class: 'soft' },
      'Calls that were made again with the same arguments, and SQL that differs in values only. The time is what all but the slowest of them took.',
    ),
    bars(
      rows.map((row) =>
        bar(
          row.spare_ns,
          whole,
          idLink(
            app,
            row.first,
            row.text === undefined
              ? short(row.function ?? '')
              : h('span', { class: 'text mono' }, visible(row.text)),
          ),
          `× ${count(row.calls)}${row.results ? `, ${results[row.results] ?? row.results}` : ''}`,
        ),
      ),
    ),
  );
}

function waitCard(app: App): Child {
  const { trace } = app;
  const { sql } = trace.summary;
  const whole = trace.whole;
  const texts = new Map<number, string | null>(
    sql.calls.map((call: { id: number; text: string | null }) => [indexOf(trace, call.id), call.text]),
  );
  const calls = new Set(
    waitingCalls(trace)
      .map((each) => each.index)
      .concat([...texts.keys()].filter((index) => index >= 0)),
  );
  if (calls.size === 0) return null;
  const slowest = [...calls].sort((a, b) => trace.total[b] - trace.total[a] || a - b).slice(0, 6);
  const said = (index: number) => {
    const sqlText = texts.get(index);
    return sqlText ? h('span', { class: 'text mono' }, visible(sqlText)) : callCell(app, index, 80);
  };
  return card(
    openLink(app, 'sql', 'Slowest queries and operations on files and network'),
    '',
    sql.queries
      ? h(
          'p',
          { class: 'soft' },
          openLink(app, 'sql', many(sql.queries, 'SQL query', 'SQL queries'), 'sql'),
          ` took ${ms(sql.total_ns)}, ${percent(sql.total_ns, whole)}.`,
        )
      : null,
    bars(slowest.map((index) => bar(trace.total[index], whole, nodeLink(app, index, said(index))))),
  );
}

function memoryCard(app: App): Child {
  const { trace } = app;
  const way = (trace.summary.memory_peak_way as Step[]).slice();
  if (way.length === 0) return null;
  const last = way[way.length - 1];
  const most = way
    .sort((a, b) => b.growth - a.growth)
    .slice(0, 5)
    .filter((step) => step.growth > 0);
  return card(
    'Memory',
    '',
    h(
      'p',
      { class: 'soft' },
      `${bytes(trace.summary.request.memory_peak)} at most, in `,
      idLink(app, last.id, text(stepName(trace, last))),
      '. What grew on the way there:',
    ),
    h(
      'ol',
      { class: 'bars' },
      most.map((step) =>
        h(
          'li',
          null,
          h('span', { class: 'figure' }, signedBytes(step.growth)),
          h('span', { class: 'name' }, idLink(app, step.id, short(stepName(trace, step)))),
        ),
      ),
    ),
  );
}

class Overview implements View {
  readonly key = 'overview';
  readonly title = 'Overview';
  readonly root: HTMLElement;

  constructor(private readonly app: App) {
    this.root = h('section');
    this.fill();
    matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => this.fill());
  }

  show(): void {}

  hide(): void {}

  private fill(): void {
    const { app } = this;
    const wrong = trouble(app).filter(Boolean);
    replace(
      this.root,
      h(
        'div',
        { class: 'cards' },
        notices(app),
        factsCard(app),
        wrong.length > 0 && h('div', { class: 'cards inner' }, wrong),
        card('Memory over time', 'wide', timeline(app)),
        areasCard(app),
        hotCard(app),
        wayCard(app),
        waitCard(app),
        againCard(app),
        exceptionsCard(app, false),
        memoryCard(app),
        cutCard(app),
      ),
    );
  }
}

export function overviewView(app: App): View {
  return new Overview(app);
}
