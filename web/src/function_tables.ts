// SPDX-License-Identifier: MIT
//
// Tables of functions: the profile, and what is around one of them.
import { isDark, type App } from './app';
import { areaColour, areaNames, areaOfFunction } from './areas';
import type { Group } from './callers';
import { h, visible } from './dom';
import { count, ms, signedBytes } from './format';
import { callCell, functionLink, nodeLink, placeText, short, timeCell, timeColumn } from './links';
import { Table, type TableColumn } from './table';
import { shortFunction, type Trace } from './trace';

// What is beside times, calls and names.
function sideColumns(trace: Trace): TableColumn<number>[] {
  const { functions: f } = trace;
  return [
    {
      key: 'each',
      extra: true,
      title: 'Own µs a call',
      width: '136px',
      figure: true,
      of: (row) => f.own_ns[row] / f.calls[row],
      cell: (row) => eachText(f.own_ns[row] / f.calls[row]),
    },
    {
      key: 'memory',
      title: 'Own memory',
      width: '136px',
      figure: true,
      hint: 'What its calls left in use, without what they called',
      of: (row) => f.own_memory[row],
      cell: (row) => signedBytes(f.own_memory[row]),
    },
    {
      key: 'place',
      extra: true,
      title: 'Defined in',
      width: '22%',
      of: (row) =>
        f.builtin[row] ? '' : `${trace.files[f.file[row]] ?? ''}:${String(f.line[row]).padStart(7, '0')}`,
      cell: (row) =>
        f.builtin[row] ? h('span', { class: 'soft' }, 'PHP') : placeText(trace, f.file[row], f.line[row], 36),
    },
  ];
}

export function profileColumns(trace: Trace): TableColumn<number>[] {
  const { functions: f } = trace;
  const whole = trace.whole;
  const name = (row: number) => shortFunction(trace, row);
  return [
    timeColumn('own', 'Own ms', (row) => f.own_ns[row], whole, 'Time in it, without what it called'),
    timeColumn(
      'total',
      'Total ms',
      (row) => f.total_ns[row],
      whole,
      'Time in it and in all that it called; recursion counts once',
    ),
    {
      key: 'calls',
      title: 'Calls',
      width: '78px',
      figure: true,
      of: (row) => f.calls[row],
      cell: (row) => count(f.calls[row]),
    },
    {
      key: 'name',
      main: true,
      title: 'Function',
      of: (row) => name(row).toLowerCase(),
      cell: (row) => [dot(row), functionLink(trace, row)],
    },
    ...sideColumns(trace),
  ];
}

function eachText(ns: number): string {
  const tenths = Math.round(ns / 100);
  return `${count(Math.floor(tenths / 10))}.${tenths % 10}`;
}

// The colour of its area, as in the flame graph.
function dot(number: number): HTMLElement {
  const area = areaOfFunction(number);
  return h('i', {
    class: 'dot',
    style: { background: areaColour(area, isDark()) },
    title: visible(areaNames[area] ?? ''),
    'aria-hidden': true,
  });
}

function groupColumns(app: App, whole: number): TableColumn<Group>[] {
  const { trace } = app;
  return [
    {
      key: 'total',
      title: 'Total ms',
      width: '102px',
      figure: true,
      of: (g) => g.total,
      cell: (g) => timeCell(g.total, whole),
    },
    {
      key: 'own',
      title: 'Own ms',
      width: '82px',
      figure: true,
      of: (g) => g.own,
      cell: (g) => ms(g.own).slice(0, -3),
    },
    {
      key: 'calls',
      title: 'Calls',
      width: '66px',
      figure: true,
      of: (g) => g.calls,
      cell: (g) => count(g.calls),
    },
    {
      key: 'name',
      main: true,
      title: 'Function',
      of: (g) => g.name.toLowerCase(),
      cell: (g) =>
        g.function >= 0
          ? functionLink(trace, g.function, short(g.name, 36))
          : nodeLink(app, g.node, short(g.name, 36)),
    },
  ];
}

export function groupTable(
  app: App,
  title: string,
  groups: Group[],
  whole: number,
  empty: string,
): HTMLElement {
  const table = new Table<Group>({
    label: title,
    sort: 'total',
    empty,
    least: '420px',
    columns: groupColumns(app, whole),
  });
  table.set(groups);
  return h(
    'section',
    null,
    h('h3', null, title, groups.length > 1 ? ` (${count(groups.length)})` : ''),
    table.root,
  );
}

export function slowestTable(app: App, calls: number[], all: number): HTMLElement {
  const { trace } = app;
  const table = new Table<number>({
    label: 'Slowest calls',
    sort: 'total',
    least: '300px',
    isChosen: (row) => row === app.selected,
    choose: (row) => app.select(row),
    columns: [
      {
        key: 'total',
        title: 'Total ms',
        width: '102px',
        figure: true,
        of: (row) => trace.total[row],
        cell: (row) => timeCell(trace.total[row], trace.total[calls[0]]),
      },
      {
        key: 'id',
        main: true,
        title: 'Call',
        of: (row) => trace.id[row],
        cell: (row) => nodeLink(app, row, callCell(app, row, 70, true)),
      },
    ],
  });
  table.set(calls);
  return h(
    'section',
    { 'data-slowest': true },
    h(
      'h3',
      null,
      calls.length < all
        ? `The slowest ${count(calls.length)} of its ${count(all)} calls`
        : 'Its calls, slowest first',
    ),
    table.root,
  );
}
