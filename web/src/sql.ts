// SPDX-License-Identifier: MIT
//
// What PHP waited for outside of itself: each query and each operation on files, the network and other
// programs; and SQL by its text.
import type { App, View } from './app';
import { h, replace, visible } from './dom';
import { count, many, ms } from './format';
import { callCell, idLink, nodeLink, pathText, short, timeCell, timeColumn } from './links';
import { Table, type TableColumn } from './table';
import { Kind, indexOf, nameOf } from './trace';
import { waitNames, waitingCalls, type Wait } from './waits';

interface Row {
  index: number;
  wait: Wait;
  sql: string | null; // its text
  asker: number; // who wanted it: of SQL, what called the database's layer; -1 unknown
  file: string; // where that was
  line: number;
}

interface Statement {
  text: string | null;
  calls: number;
  total_ns: number;
  slowest: number;
  like: boolean;
}

interface Query {
  id: number;
  text: string | null;
  caller: number | null;
  file: string | null;
  line: number | null;
}

// The first call above that a script defines, or include.
function askerOf(app: App, index: number): number {
  const { trace } = app;
  for (let above = trace.parent[index]; above >= 0; above = trace.parent[above]) {
    if (trace.kind[above] !== Kind.call || !trace.functions.builtin[trace.name[above]]) return above;
  }
  return -1;
}

function rowsOf(app: App): Row[] {
  const { trace } = app;
  const queries = new Map<number, Query>(
    trace.summary.sql.calls.map((call: Query) => [indexOf(trace, call.id), call]),
  );
  const row = (index: number, wait: Wait): Row => {
    const query = queries.get(index);
    if (!query)
      return {
        index,
        wait,
        sql: null,
        asker: askerOf(app, index),
        file: trace.files[trace.file[index]] ?? '',
        line: trace.line[index],
      };
    return {
      index,
      wait: 'sql',
      sql: query.text,
      asker: query.caller === null ? -1 : indexOf(trace, query.caller),
      file: query.file ?? '',
      line: query.line ?? 0,
    };
  };
  const rows = waitingCalls(trace).map(({ index, wait }) => row(index, wait));
  const there = new Set(rows.map(({ index }) => index));
  for (const index of queries.keys()) if (index >= 0 && !there.has(index)) rows.push(row(index, 'sql'));
  return rows;
}

function callColumns(app: App, most: number): TableColumn<Row>[] {
  const { trace } = app;
  return [
    timeColumn('total', 'Total ms', (r) => trace.total[r.index], trace.whole, undefined, most),
    { key: 'wait', title: 'Kind', width: '90px', of: (r) => r.wait, cell: (r) => waitNames[r.wait] },
    {
      key: 'what',
      main: true,
      title: 'What',
      of: (r) => r.sql ?? nameOf(trace, r.index),
      cell: (r) =>
        nodeLink(
          app,
          r.index,
          r.sql === null
            ? callCell(app, r.index, 110)
            : h('span', { class: 'text mono', title: visible(r.sql) }, visible(r.sql)),
        ),
    },
    {
      key: 'by',
      title: 'Asked by',
      width: '22%',
      of: (r) => nameOf(trace, r.asker),
      cell: (r) => (r.asker < 0 ? '' : nodeLink(app, r.asker, short(nameOf(trace, r.asker), 34))),
    },
    {
      key: 'place',
      extra: true,
      title: 'At',
      width: '20%',
      of: (r) => `${r.file}:${String(r.line).padStart(7, '0')}`,
      cell: (r) => pathText(r.file, r.line, 34),
    },
    {
      key: 'start',
      extra: true,
      title: 'Begins at ms',
      width: '112px',
      figure: true,
      rises: true,
      of: (r) => trace.start[r.index],
      cell: (r) => ms(trace.start[r.index]).slice(0, -3),
    },
  ];
}

function callTable(app: App, most: number): Table<Row> {
  return new Table<Row>({
    label: 'Queries and operations',
    sort: 'total',
    least: '560px',
    empty: 'There are none of these in this request.',
    choose: (row) => app.select(row.index),
    isChosen: (row) => row.index === app.selected,
    isHit: (row) => app.hits?.bits[row.index] === 1,
    columns: callColumns(app, most),
  });
}

function statementTable(app: App): Table<Statement> {
  const { sql } = app.trace.summary;
  const most = sql.statements.reduce((a: number, each: Statement) => Math.max(a, each.total_ns), 0);
  const table = new Table<Statement>({
    label: 'SQL by its text',
    sort: 'total',
    least: '620px',
    empty: 'No SQL was run in this request.',
    choose: (row) => app.select(indexOf(app.trace, row.slowest)),
    isChosen: (row) => indexOf(app.trace, row.slowest) === app.selected && app.selected >= 0,
    columns: [
      {
        key: 'total',
        title: 'Total ms',
        width: '104px',
        figure: true,
        of: (r) => r.total_ns,
        cell: (r) => timeCell(r.total_ns, app.trace.whole, most),
      },
      {
        key: 'calls',
        title: 'Calls',
        width: '80px',
        figure: true,
        of: (r) => r.calls,
        cell: (r) => count(r.calls),
      },
      {
        key: 'text',
        main: true,
        title: 'Text',
        of: (r) => r.text ?? '',
        cell: (r) =>
          idLink(
            app,
            r.slowest,
            r.text === null
              ? '(text unknown)'
              : h('span', { class: 'text mono', title: visible(r.text) }, visible(r.text)),
          ),
      },
    ],
  });
  table.set(sql.statements.map((each: Statement) => ({ ...each })));
  return table;
}

class WaitView implements View {
  readonly key = 'sql';
  readonly title = 'SQL & I/O';
  readonly root = h('section');
  private readonly rows: Row[];
  private readonly table: Table<Row>;
  private statements: Table<Statement> | null = null;
  private readonly place = h('div', { style: { display: 'contents' } });
  private readonly said = h('output', { class: 'soft' });
  private readonly buttons: HTMLElement[];

  constructor(private readonly app: App) {
    this.rows = rowsOf(app);
    this.table = callTable(
      app,
      this.rows.reduce((most, { index }) => Math.max(most, app.trace.total[index]), 0),
    );
    const many = (wait: Wait) => this.rows.filter((row) => row.wait === wait).length;
    const kinds: [string, string][] = [
      ['all', 'All'],
      ...(Object.keys(waitNames) as Wait[])
        .filter((wait) => wait === 'sql' || many(wait))
        .map((wait): [string, string] => [
          wait,
          `${wait === 'sql' ? 'Database calls' : waitNames[wait]} ${count(many(wait))}`,
        ]),
    ];
    if (app.trace.summary.sql.statements.length) kinds.push(['text', 'SQL by text']);
    this.buttons = kinds.map(([key, title]) =>
      h('button', { 'data-kind': key, onclick: () => this.pick(key) }, title),
    );
    replace(
      this.root,
      h(
        'div',
        { class: 'tools' },
        h('span', { class: 'segments', role: 'group', 'aria-label': 'Which of them' }, this.buttons),
        this.said,
      ),
      this.place,
    );
    this.pick('all');
  }

  show(): void {
    this.table.refresh();
  }

  hide(): void {}

  focus(): void {
    (this.statements?.root.isConnected ? this.statements : this.table).focus();
  }

  argument(said: string): void {
    if (said && this.buttons.some((button) => button.dataset.kind === said)) this.pick(said);
  }

  selected(): void {
    this.table.refresh();
    this.statements?.refresh();
  }

  found(): void {
    this.table.refresh();
  }

  private pick(kind: string): void {
    for (const button of this.buttons)
      button.setAttribute('aria-pressed', String(button.dataset.kind === kind));
    const { trace } = this.app;
    if (kind === 'text') {
      this.statements ??= statementTable(this.app);
      replace(this.place, this.statements.root);
      this.said.textContent = many(trace.summary.sql.statements.length, 'text');
      return;
    }
    const rows = kind === 'all' ? this.rows : this.rows.filter((row) => row.wait === kind);
    let total = 0;
    // What lies in another of them took no time beside it.
    let end = -1;
    for (const { index } of rows.slice().sort((a, b) => a.index - b.index)) {
      if (index <= end) continue;
      total += trace.total[index];
      end = trace.last[index];
    }
    this.said.textContent = `${many(rows.length, 'call')}, ${ms(total)} together`;
    replace(this.place, this.table.root);
    this.table.set(rows);
  }
}

export function sqlView(app: App): View {
  return new WaitView(app);
}
