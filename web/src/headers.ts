// SPDX-License-Identifier: MIT
//
// Headers: each that was set, and what became of it.
import type { App, View } from './app';
import { h, text, visible, type Child } from './dom';
import { idLink, nodeLink } from './links';
import { listView, nodeTable, placeColumn, startColumn } from './node_table';
import { indexOf } from './trace';

const fates: Record<string, string> = {
  deletes: 'deletes others',
  too_late: 'too late, not sent',
  damaged: 'damaged in the trace',
};

interface Operation {
  id: number;
  parent: number;
  name: string | null;
  operation: string;
  header: string | null;
  fate: string;
  ended_by: number | null;
}

function fateCell(app: App, row: Operation): Child {
  const className = row.fate === 'sent' ? 'good' : row.fate === 'too_late' ? 'bad' : 'soft';
  return [
    h('span', { class: className }, fates[row.fate] ?? visible(row.fate)),
    row.ended_by !== null && [' by ', idLink(app, row.ended_by)],
  ];
}

export function headersView(app: App): View {
  const { trace } = app;
  const node = (row: Operation) => indexOf(trace, row.id);
  const table = nodeTable<Operation>(
    app,
    node,
    {
      label: 'Headers',
      sort: 'start',
      least: '680px',
      empty: 'This request set no header.',
      columns: [
        startColumn(trace, node),
        {
          key: 'operation',
          title: 'Operation',
          width: '100px',
          of: (r) => r.operation,
          cell: (r) => visible(r.operation.replace('_', ' ')),
        },
        {
          key: 'header',
          main: true,
          title: 'Header',
          of: (r) => r.header ?? '',
          cell: (r) => nodeLink(app, node(r), h('span', { class: 'text mono' }, visible(r.header || '(an empty line)'))),
        },
        {
          key: 'fate',
          title: 'What became of it',
          width: '160px',
          of: (r) => r.fate,
          cell: (r) => fateCell(app, r),
        },
        {
          key: 'by',
          title: 'Set by',
          width: '16%',
          of: (r) => r.name ?? '',
          cell: (r) => idLink(app, r.parent, text(r.name ?? '(PHP)')),
        },
        placeColumn(trace, node),
      ],
    },
    trace.response.operations,
  );
  return listView('headers', 'Headers', [table], [table.root]);
}
