// SPDX-License-Identifier: MIT
//
// Events: flushes, exit, headers that were sent, marks of an application.
import type { App, View } from './app';
import { text } from './dom';
import { nodeLink } from './links';
import { listView, nodeTable, nodesOf, placeColumn, startColumn } from './node_table';
import { Kind, kindNames, labelOf, nameOf } from './trace';

export const eventKinds = [Kind.event, Kind.flush, Kind.exit, Kind.send_headers];

export function eventsView(app: App): View {
  const { trace } = app;
  const self = (row: number) => row;
  // The column beside it says that it is an event.
  const what = (row: number) =>
    (trace.kind[row] === Kind.event && labelOf(trace, row)) || nameOf(trace, row);
  const table = nodeTable<number>(
    app,
    self,
    {
      label: 'Events',
      sort: 'start',
      least: '600px',
      empty: 'There are no events in this request: no flush, no exit, no mark of an application.',
      columns: [
        startColumn(trace, self),
        {
          key: 'kind',
          title: 'Kind',
          width: '120px',
          of: (r) => trace.kind[r],
          cell: (r) => kindNames[trace.kind[r]].replace('_', ' '),
        },
        {
          key: 'name',
          main: true,
          title: 'What',
          of: what,
          cell: (r) => nodeLink(app, r, text(what(r))),
        },
        {
          key: 'in',
          title: 'In',
          width: '24%',
          of: (r) => nameOf(trace, trace.parent[r]),
          cell: (r) => nodeLink(app, trace.parent[r]),
        },
        placeColumn(trace, self),
      ],
    },
    nodesOf(trace, ...eventKinds),
  );
  return listView('events', 'Events', [table], [table.root]);
}
