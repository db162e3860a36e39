// SPDX-License-Identifier: MIT
//
// What went wrong: exceptions and where they were caught, and PHP's errors.
import type { App, View } from './app';
import { h, text, type Child } from './dom';
import { many } from './format';
import { idLink, nodeLink, pathText } from './links';
import { listView, nodeTable, nodesOf, placeColumn, startColumn } from './node_table';
import type { Table } from './table';
import { Kind, indexOf, labelOf, nameOf } from './trace';

interface Thrown {
  class: string | null;
  message: string | null;
  made_by: number | null;
  file: string | null;
  line: number | null;
  uncaught: boolean;
  passes: { calls: number[]; caught_in: number | null }[];
}

function thrownAt({ file, line }: Thrown): HTMLElement | null {
  return file === null ? null : pathText(file, line ?? 0, 30);
}

function exceptionTable(app: App): Table<Thrown> {
  const { trace } = app;
  const node = (row: Thrown) => indexOf(trace, row.made_by ?? row.passes[0]?.calls[0] ?? -1);
  return nodeTable<Thrown>(
    app,
    node,
    {
      label: 'Exceptions',
      isShort: true,
      sort: 'start',
      least: '560px',
      columns: [
        startColumn(trace, node),
        {
          key: 'class',
          main: true,
          title: 'Exception',
          width: '20%',
          of: (r) => r.class ?? '',
          cell: (r) => nodeLink(app, node(r), text(r.class ?? '(unknown)')),
        },
        { key: 'message', title: 'Message', of: (r) => r.message ?? '', cell: (r) => text(r.message ?? '') },
        {
          key: 'by',
          title: 'Caught in',
          width: '22%',
          of: (r) => (r.uncaught ? '' : '1'),
          cell: (r) => caughtIn(app, r.passes, r.uncaught),
        },
        {
          key: 'place',
          extra: true,
          title: 'Thrown at',
          width: '22%',
          of: (r) => r.file ?? '',
          cell: thrownAt,
        },
      ],
    },
    trace.summary.exceptions,
  );
}

function caughtIn(app: App, passes: { caught_in: number | null }[], isUncaught: boolean): Child {
  if (isUncaught) return h('b', { class: 'bad' }, 'nobody caught it');
  const at = passes[passes.length - 1]?.caught_in ?? null;
  return at === null ? '' : idLink(app, at, text(nameOf(app.trace, indexOf(app.trace, at))));
}

function errorTable(app: App): Table<number> {
  const { trace } = app;
  const self = (row: number) => row;
  return nodeTable<number>(
    app,
    self,
    {
      label: 'PHP errors',
      isShort: true,
      sort: 'start',
      least: '480px',
      columns: [
        startColumn(trace, self),
        {
          key: 'message',
          main: true,
          title: 'Error',
          of: (r) => labelOf(trace, r),
          cell: (r) => nodeLink(app, r, text(labelOf(trace, r))),
        },
        {
          key: 'in',
          title: 'In',
          width: '20%',
          of: (r) => nameOf(trace, trace.parent[r]),
          cell: (r) => nodeLink(app, trace.parent[r]),
        },
        placeColumn(trace, self),
      ],
    },
    nodesOf(trace, Kind.error),
  );
}

function someUncaught({ trace }: App): boolean {
  return trace.summary.exceptions.some((each: Thrown) => each.uncaught);
}

export function errorsView(app: App): View {
  const table = errorTable(app);
  const exceptions = exceptionTable(app);
  const thrown = exceptions.length;
  const parts: Child[] = [];
  if (thrown) parts.push(h('h2', { class: 'caption' }, `${many(thrown, 'exception')}${someUncaught(app) ? '' : ', all of them caught'}`), exceptions.root);
  if (table.length) parts.push(h('h2', { class: 'caption' }, many(table.length, 'PHP error')), table.root);
  if (parts.length === 0)
    parts.push(
      h('p', { class: 'nothing' }, 'PHP reported no error in this request, and nothing threw an exception.'),
    );
  return listView('errors', 'Errors', [table, exceptions], parts);
}
