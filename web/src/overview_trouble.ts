// SPDX-License-Identifier: MIT
//
// What went wrong, first on the overview: what never ended, exceptions, errors, late headers, and what
// is missing in the trace or in this page.
import type { App } from './app';
import { h, text, type Child } from './dom';
import { bytes, count, many, ms } from './format';
import { idLink, nodeLink } from './links';
import { card, firsts, openLink, placeNote } from './overview_parts';
import { indexOf, nameOf } from './trace';

const few = 5;

export function notices(app: App): Child {
  const { meta, summary } = app.trace;
  const left = meta.left_out;
  const said: Child[] = [];
  if (meta.damaged)
    said.push([
      h('b', null, 'The trace is damaged '),
      `in ${many(meta.damaged, 'place')}; what could be read is here. “cttool check” lists them.`,
    ]);
  else if (!summary.request.complete)
    said.push([
      h('b', null, 'The trace has no end: '),
      'the request was still running, or the tracer was stopped.',
    ]);
  if (app.trace.count < summary.request.nodes)
    said.push(
      `This page has ${count(app.trace.count)} of the trace’s ${many(summary.request.nodes, 'node')}; the others were left out when it was made. The overview speaks of all of them.`,
    );
  if (meta.untimed)
    said.push(
      `${many(meta.untimed, 'node has', 'nodes have')} no time of ${meta.untimed === 1 ? 'its' : 'their'} own and the time of what was before.`,
    );
  if (meta.moved)
    said.push(`The clock ran backwards: times of ${many(meta.moved, 'node')} were moved to fit.`);
  if (left.nodes) {
    said.push([
      h('b', null, `Values of ${many(left.nodes, 'node')} are not in this page, `),
      `which would be larger than ${bytes(left.max_size)} otherwise. They are of calls that took at most ${ms(left.longest_ns)}. Get them by `,
      h('code', { class: 'mono' }, `cttool show ${meta.trace} NUMBER`),
      ', or all of them with ',
      h('code', { class: 'mono' }, '--max-size'),
      '.',
    ]);
  }
  return (
    said.length > 0 &&
    h(
      'ul',
      { class: 'notices', role: 'note', 'aria-label': 'About this trace' },
      said.map((each) => h('li', null, each)),
    )
  );
}

interface Open {
  id: number;
  kind: string;
  function: string | null;
  start_ns: number;
  total_ns: number;
  file: string | null;
  line: number | null;
}

function openName(app: App, open: Open): string {
  const index = indexOf(app.trace, open.id);
  return index >= 0 ? nameOf(app.trace, index) : (open.function ?? open.kind);
}

function openCard(app: App): Child {
  const list = app.trace.summary.open as Open[];
  if (list.length === 0) return null;
  const deepest = list[list.length - 1];
  return card(
    [`Never ended: ${count(list.length)}`],
    'trouble',
    h('p', { class: 'soft' }, 'It ended in the innermost of these, which is where to look first.'),
    h(
      'ul',
      { class: 'rows' },
      firsts(
        list.slice().reverse(),
        few,
        (each) =>
          h(
            'li',
            null,
            idLink(app, each.id, h(each === deepest ? 'b' : 'span', null, text(openName(app, each)))),
            h('small', { class: 'soft' }, ` for ${ms(each.total_ns)} ${placeNote(each.file, each.line)}`),
          ),
        openLink(app, 'tree', `${count(list.length - few)} more`),
      ),
    ),
  );
}

interface Thrown {
  class: string | null;
  message: string | null;
  made_by: number | null;
  file: string | null;
  line: number | null;
  uncaught: boolean;
  passes: { calls: number[]; caught_in: number | null }[];
}

// One of each class and message, those that nobody caught first. Only if nobody caught one, or only if
// all were caught.
export function exceptionsCard(app: App, isUncaught: boolean): Child {
  const list = app.trace.summary.exceptions as Thrown[];
  if (list.length === 0 || list.some((each) => each.uncaught) !== isUncaught) return null;
  const alike = new Map<string, { first: Thrown; times: number }>();
  for (const each of list.slice().sort((a, b) => Number(b.uncaught) - Number(a.uncaught))) {
    const key = `${each.uncaught} ${each.class} ${each.message} ${each.file} ${each.line}`;
    const known = alike.get(key);
    if (known) ++known.times;
    else alike.set(key, { first: each, times: 1 });
  }
  return card(
    openLink(app, 'errors', `Exceptions: ${count(list.length)}${isUncaught ? '' : ', all of them caught'}`),
    isUncaught ? 'trouble' : '',
    h(
      'ul',
      { class: 'rows' },
      firsts(
        [...alike.values()],
        few,
        ({ first, times }) => {
          const node = indexOf(app.trace, first.made_by ?? first.passes[0]?.calls[0] ?? -1);
          return h(
            'li',
            null,
            nodeLink(app, node, text(first.class ?? '(unknown class)')),
            times > 1 && ` × ${count(times)}`,
            first.uncaught && h('b', { class: 'bad' }, ' nobody caught it'),
            h('div', null, text(first.message ?? '', 'lines2')),
            h('small', { class: 'soft' }, placeNote(first.file, first.line)),
          );
        },
        openLink(app, 'errors', `${count(alike.size - few)} more`),
      ),
    ),
  );
}

interface PhpError {
  level: string | null;
  number: number;
  message: string;
  file: string | null;
  line: number | null;
  first: number;
  count: number;
}

function errorsCard(app: App): Child {
  const list = app.trace.summary.errors as PhpError[];
  if (list.length === 0) return null;
  const row = (each: PhpError) =>
    h(
      'li',
      null,
      idLink(app, each.first, text(each.level || `error ${each.number}`)),
      each.count > 1 && ` × ${count(each.count)}`,
      h('div', null, text(each.message ?? '', 'lines2')),
      h('small', { class: 'soft' }, placeNote(each.file, each.line)),
    );
  const all = list.reduce((sum, each) => sum + each.count, 0);
  return card(
    openLink(app, 'errors', `PHP errors: ${count(all)}`),
    'trouble',
    h(
      'ul',
      { class: 'rows' },
      firsts(list, few, row, openLink(app, 'errors', `${count(list.length - few)} more`)),
    ),
  );
}

function lateCard(app: App): Child {
  const list = app.trace.summary.late_headers as {
    id: number;
    header: string | null;
    file: string | null;
    line: number | null;
  }[];
  if (list.length === 0) return null;
  return card(
    openLink(app, 'headers', `Headers after output: ${count(list.length)}`),
    'trouble',
    h('p', { class: 'soft' }, 'They came too late to be sent.'),
    h(
      'ul',
      { class: 'rows' },
      firsts(
        list,
        few,
        (each) =>
          h(
            'li',
            null,
            idLink(app, each.id, text(each.header ?? '(header)')),
            h('small', { class: 'soft' }, ` ${placeNote(each.file, each.line)}`),
          ),
        openLink(app, 'headers', `${count(list.length - few)} more`),
      ),
    ),
  );
}

export function cutCard(app: App): Child {
  const { cut } = app.trace.summary;
  const names: [string, string, string, string?][] = [
    ['writes', 'output', 'write'],
    ['queries', 'sql', 'text of SQL', 'texts of SQL'],
    ['exceptions', 'errors', 'message of an exception', 'messages of exceptions'],
  ];
  const rows = names
    .filter(([key]) => cut[key]?.count > 0)
    .map(([key, , one, more]) =>
      h(
        'li',
        null,
        idLink(app, cut[key].first, many(cut[key].count, one, more)),
        cut[key].count > 1 && h('small', { class: 'soft' }, ' (the first)'),
      ),
    );
  return (
    rows.length > 0 &&
    card(
      'Recorded only in part',
      '',
      h('p', { class: 'soft' }, 'The tracer kept the beginning of these, and cut the rest off.'),
      h('ul', { class: 'rows' }, rows),
    )
  );
}

export function trouble(app: App): Child[] {
  return [openCard(app), exceptionsCard(app, true), errorsCard(app), lateCard(app)];
}
