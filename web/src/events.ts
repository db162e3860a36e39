// SPDX-License-Identifier: MIT
//
// Events: flushes, exit, headers that were sent, marks of an application.
import type { App, View } from './app';
import { nodeLink } from './links';
import { listView, nodeTable, nodesOf, placeColumn, startColumn } from './node_table';
import { Kind, kindNames, nameOf } from './trace';

export function eventsView(app: App): View {
  const { trace } = app;
  const self = (row: number) => row;
  const table = nodeTable<number>(
    app,
    self,
    {
      label: 'Events',
      sort: 'start',
      least: '440px',
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
        { key: 'name', title: 'What', of: (r) => nameOf(trace, r), cell: (r) => nodeLink(app, r) },
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
    nodesOf(trace, Kind.event, Kind.flush, Kind.exit, Kind.send_headers),
  );
  return listView('events', 'Events', [table], [table.root]);
}
