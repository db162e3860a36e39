// SPDX-License-Identifier: MIT
//
// Tables of which a row is a node, and views that are such tables.
import type { App, View } from './app';
import { h, type Child } from './dom';
import { ms } from './format';
import { placeText } from './links';
import { Table, type TableChoice, type TableColumn } from './table';
import type { Trace } from './trace';

// A view of tables that follows the selection.
export function listView(key: string, title: string, tables: { refresh(): void; focus(): void; length: number }[], parts: Child[]): View {
  const refresh = () => {
    for (const table of tables) table.refresh();
  };
  return {
    key,
    title,
    root: h('section', null, ...parts),
    show: refresh,
    hide() {},
    focus: () => (tables.find((table) => table.length > 0) ?? tables[0]).focus(),
    selected: refresh,
    found: refresh,
  };
}

// Tables of rows that have a node.
export function nodeTable<Row>(
  app: App,
  node: (row: Row) => number,
  choice: TableChoice<Row>,
  rows: Row[],
): Table<Row> {
  const table = new Table<Row>({
    choose: (row) => node(row) >= 0 && app.select(node(row)),
    isChosen: (row) => node(row) === app.selected && app.selected >= 0,
    isHit: (row) => app.hits?.bits[node(row)] === 1,
    ...choice,
  });
  table.set(rows);
  return table;
}

export function nodesOf(trace: Trace, ...kinds: number[]): number[] {
  const list: number[] = [];
  for (let i = 0; i < trace.count; ++i) if (kinds.includes(trace.kind[i])) list.push(i);
  return list;
}

export function startColumn<Row>(trace: Trace, node: (row: Row) => number): TableColumn<Row> {
  return {
    key: 'start',
    title: 'At ms',
    width: '104px',
    figure: true,
    rises: true,
    hint: 'Time since the request began',
    of: (row) => trace.start[node(row)],
    cell: (row) => ms(trace.start[node(row)]).slice(0, -3),
  };
}

export function placeColumn<Row>(trace: Trace, node: (row: Row) => number): TableColumn<Row> {
  return {
    key: 'place',
    extra: true,
    title: 'Place',
    width: '26%',
    of: (row) =>
      `${trace.files[trace.file[node(row)]] ?? ''}:${String(trace.line[node(row)]).padStart(7, '0')}`,
    cell: (row) => placeText(trace, trace.file[node(row)], trace.line[node(row)]),
  };
}
