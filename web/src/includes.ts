// SPDX-License-Identifier: MIT
//
// Included files, and which of them took longest.
import type { App, View } from './app';
import { h, text, type Child } from './dom';
import { count, ms, signedBytes } from './format';
import { nodeLink, tailedPath, timeColumn } from './links';
import { listView, nodeTable, nodesOf, startColumn } from './node_table';
import type { Table } from './table';
import { Kind, labelOf, type Trace } from './trace';

interface Included {
  path: string;
  total: number;
  own: number;
  times: number;
  memory: number;
  node: number;
}

function includesOf(trace: Trace): Included[] {
  const byPath = new Map<number, Included>();
  for (const index of nodesOf(trace, Kind.include)) {
    let row = byPath.get(trace.name[index]);
    if (!row)
      byPath.set(
        trace.name[index],
        (row = { path: labelOf(trace, index), total: 0, own: 0, times: 0, memory: 0, node: index }),
      );
    row.total += trace.total[index];
    row.own += trace.own[index];
    row.memory += trace.growth[index] || 0;
    ++row.times;
    if (trace.own[index] > trace.own[row.node]) row.node = index;
  }
  return [...byPath.values()];
}

function includeTable(app: App, rows: Included[]): Table<Included> {
  const { trace } = app;
  const node = (row: Included) => row.node;
  return nodeTable<Included>(
    app,
    node,
    {
      label: 'Included files',
      sort: 'own',
      least: '640px',
      empty: 'This request included no file.',
      columns: [
        timeColumn(
          'own',
          'Own ms',
          (r) => r.own,
          trace.whole,
          'Compiling it, and what stands in it outside of functions',
        ),
        timeColumn('total', 'Total ms', (r) => r.total, trace.whole, 'With all that it called and included'),
        {
          key: 'path',
          main: true,
          title: 'File',
          of: (r) => r.path,
          cell: (r) => nodeLink(app, r.node, tailedPath(r.path)),
        },
        {
          key: 'times',
          extra: true,
          title: 'Times',
          width: '76px',
          figure: true,
          of: (r) => r.times,
          cell: (r) => count(r.times),
        },
        {
          key: 'memory',
          title: 'Memory +',
          width: '104px',
          figure: true,
          of: (r) => r.memory,
          cell: (r) => signedBytes(r.memory),
        },
        startColumn(trace, node),
      ],
    },
    rows,
  );
}

function longest(app: App, rows: Included[]): Child {
  if (rows.length === 0) return null;
  const most = (of: (row: Included) => number) => rows.reduce((a, b) => (of(b) > of(a) ? b : a));
  const own = most((row) => row.own);
  const total = most((row) => row.total);
  return h(
    'p',
    { class: 'say' },
    ['Longest by itself: ', nodeLink(app, own.node, text(own.path)), `, ${ms(own.own)}. `],
    [
      'Longest with all that it called: ',
      nodeLink(app, total.node, text(total.path)),
      `, ${ms(total.total)}.`,
    ],
  );
}

export function includesView(app: App): View {
  const rows = includesOf(app.trace);
  const table = includeTable(app, rows);
  return listView('includes', 'Includes', [table], [longest(app, rows), table.root]);
}
