// SPDX-License-Identifier: MIT
//
// A table that sorts by its headings and draws the rows that are looked at, however many there are.
import { h, replace, type Child } from './dom';

export interface TableColumn<Row> {
  key: string;
  title: string;
  hint?: string;
  width?: string; // none: what is left
  extra?: boolean; // left away where the table is narrow
  main?: boolean; // stands first where the table is narrow
  figure?: boolean; // right-aligned, and greatest first
  rises?: boolean; // a figure of which the least stands first
  of: (row: Row) => number | string; // to sort by
  cell: (row: Row) => Child;
}

export interface TableChoice<Row> {
  label: string; // for those who cannot see it
  columns: TableColumn<Row>[];
  sort: string; // key of the column
  least?: string; // width below which it scrolls
  isShort?: boolean; // it is as high as its rows
  empty?: string; // what stands there where no row is
  choose?: (row: Row) => void; // by a click or the Enter key on the row
  isChosen?: (row: Row) => boolean;
  isHit?: (row: Row) => boolean;
}

const rowHeight = 28;
const beyond = 12; // rows that are drawn above and below what is seen
const fewest = 120; // rows that are all drawn
const narrow = 400; // px

function firstDirection(column: { figure?: boolean; rises?: boolean }): 1 | -1 {
  return column.figure && !column.rises ? -1 : 1;
}

function classOf(column: { figure?: boolean; extra?: boolean }): string {
  return `${column.figure ? 'figure' : ''}${column.extra ? ' extra' : ''}`.trim();
}

export class Table<Row> {
  readonly root: HTMLElement;
  private rows: Row[] = [];
  private sort: string;
  private direction: 1 | -1;
  private first = -1;
  private last = -1;
  private readonly body = h('tbody');
  private readonly table: HTMLTableElement;
  private readonly heads = new Map<string, HTMLElement>();
  private readonly frame = h('colgroup');
  private readonly headings = h('tr', { 'aria-rowindex': 1 });
  private columns: TableColumn<Row>[] = [];
  private readonly nothing: HTMLElement;

  constructor(private readonly choice: TableChoice<Row>) {
    this.sort = choice.sort;
    this.direction = firstDirection(this.columnOf(choice.sort));
    for (const column of choice.columns) this.heads.set(column.key, this.head(column));
    this.table = h(
      'table',
      { 'aria-label': choice.label, style: { minWidth: choice.least ?? '' } },
      this.frame,
      h('thead', null, this.headings),
      this.body,
    );
    this.nothing = h('p', { class: 'nothing' }, choice.empty ?? 'Nothing.');
    this.root = h(
      'div',
      { class: choice.isShort ? 'table short' : 'table', tabindex: -1, onscroll: () => this.draw() },
      this.table,
      this.nothing,
    );
    this.body.addEventListener('keydown', (event) => this.key(event));
    this.arrange(false);
    new ResizeObserver(() => {
      const { clientWidth } = this.root;
      if (clientWidth > 0) this.arrange(clientWidth < narrow);
      this.draw();
    }).observe(this.root);
  }

  get length(): number {
    return this.rows.length;
  }

  set(rows: Row[]): void {
    this.rows = rows;
    this.table.hidden = rows.length === 0;
    this.nothing.hidden = rows.length !== 0;
    this.table.setAttribute('aria-rowcount', String(rows.length + 1));
    this.root.scrollTop = 0;
    this.order();
  }

  // Gives the keys to the chosen row, or else to the first in sight.
  focus(): void {
    this.draw();
    const at = this.choice.isChosen ? this.rows.findIndex((row) => this.choice.isChosen!(row)) : -1;
    const first = Math.ceil(this.root.scrollTop / rowHeight);
    (this.linkOf(at) ?? this.linkOf(first) ?? this.root).focus({ preventScroll: true });
  }

  // Draws again what is seen, as something about rows is different now.
  refresh(): void {
    this.first = -1;
    this.draw();
  }

  // Brings the first row that fits into sight.
  reveal(fits: (row: Row) => boolean): void {
    const at = this.rows.findIndex(fits);
    if (at < 0) return;
    const { scrollTop, clientHeight } = this.root;
    const place = at * rowHeight;
    if (place < scrollTop || place > scrollTop + clientHeight - 3 * rowHeight)
      this.root.scrollTop = Math.max(0, place - clientHeight / 2);
  }

  private columnOf(key: string): TableColumn<Row> {
    return this.choice.columns.find((column) => column.key === key) ?? this.choice.columns[0];
  }

  // What the table is about stands first where there is no room for all columns.
  private arrange(isNarrow: boolean): void {
    const { columns } = this.choice;
    const order = isNarrow
      ? columns.slice().sort((a, b) => Number(b.main ?? false) - Number(a.main ?? false))
      : columns;
    if (order.every((column, i) => column === this.columns[i])) return;
    this.columns = order;
    replace(
      this.frame,
      order.map((column) =>
        h('col', { class: column.extra ? 'extra' : '', style: { width: column.width ?? '' } }),
      ),
    );
    replace(
      this.headings,
      order.map(({ key }) => this.heads.get(key)!),
    );
    this.first = -1;
  }

  private head(column: TableColumn<Row>): HTMLElement {
    return h(
      'th',
      { scope: 'col', class: classOf(column), 'data-column': column.key, title: column.hint },
      h('button', { onclick: () => this.sortBy(column) }, h('span', null, column.title)),
    );
  }

  private sortBy(column: TableColumn<Row>): void {
    this.direction = this.sort === column.key ? (-this.direction as 1 | -1) : firstDirection(column);
    this.sort = column.key;
    this.order();
  }

  private order(): void {
    const { of } = this.columnOf(this.sort);
    const { direction } = this;
    const keys = new Map(this.rows.map((row) => [row, of(row)]));
    // What has no figure stands last, either way.
    const rank = (row: Row) => keys.get(row)!;
    this.rows = this.rows.slice().sort((x, y) => {
      const [a, b] = [rank(x), rank(y)];
      if (a === b) return 0;
      if (a !== a || b !== b) return a !== a ? (b !== b ? 0 : 1) : -1;
      return a < b ? -direction : direction;
    });
    for (const [key, head] of this.heads) {
      if (key === this.sort) head.setAttribute('aria-sort', direction < 0 ? 'descending' : 'ascending');
      else head.removeAttribute('aria-sort');
    }
    this.refresh();
  }

  private draw(): void {
    const many = this.rows.length;
    const { scrollTop, clientHeight } = this.root;
    const first = many <= fewest ? 0 : Math.max(0, Math.floor(scrollTop / rowHeight) - beyond);
    const last =
      many <= fewest ? many : Math.min(many, Math.ceil((scrollTop + clientHeight) / rowHeight) + beyond);
    if (first === this.first && last === this.last) return;
    const focused = this.body.contains(document.activeElement) ? this.rowOf(document.activeElement!) : -1;
    [this.first, this.last] = [first, last];
    const space = (rows: number) =>
      rows > 0 &&
      h(
        'tr',
        { class: 'space', 'aria-hidden': true },
        h('td', { style: { height: `${rows * rowHeight}px` } }),
      );
    replace(
      this.body,
      space(first),
      this.rows.slice(first, last).map((row, i) => this.row(row, first + i)),
      space(many - last),
    );
    if (focused >= 0) this.linkOf(focused)?.focus({ preventScroll: true });
  }

  private row(row: Row, at: number): HTMLElement {
    const { choice } = this;
    const classes = [choice.isChosen?.(row) ? 'chosen' : '', choice.isHit?.(row) ? 'hit' : ''];
    const cells = this.columns.map((column) => h('td', { class: classOf(column) }, column.cell(row)));
    return h(
      'tr',
      {
        class: classes.join(' ').trim(),
        'aria-rowindex': at + 2,
        'data-row': at,
        onclick: (event: Event) =>
          !(event.target as HTMLElement).closest('a, button') && choice.choose?.(row),
      },
      cells,
    );
  }

  private rowOf(element: Element): number {
    return Number(element.closest<HTMLElement>('tr')?.dataset.row ?? -1);
  }

  private linkOf(at: number): HTMLElement | null {
    return this.body.querySelector(`tr[data-row="${at}"] a, tr[data-row="${at}"] button`);
  }

  // Arrows go from row to row, as far as rows have something to go to.
  private key(event: KeyboardEvent): void {
    const page = Math.max(1, Math.floor(this.root.clientHeight / rowHeight) - 2);
    const at = this.rowOf(event.target as Element);
    const many = this.rows.length;
    const to: Record<string, number> = {
      ArrowDown: at + 1,
      ArrowUp: at - 1,
      PageDown: at + page,
      PageUp: at - page,
      Home: 0,
      End: many - 1,
    };
    if (at < 0 || !(event.key in to)) return;
    event.preventDefault();
    const next = Math.min(many - 1, Math.max(0, to[event.key]));
    const place = next * rowHeight;
    const { scrollTop, clientHeight } = this.root;
    if (place < scrollTop) this.root.scrollTop = place;
    else if (place + 2 * rowHeight > scrollTop + clientHeight)
      this.root.scrollTop = place + 2 * rowHeight - clientHeight;
    this.draw();
    this.linkOf(next)?.focus({ preventScroll: true });
  }
}
