// SPDX-License-Identifier: MIT
//
// The tree: what called what, row by row, with times and memory.
import type { App, Hits, View } from './app';
import { h } from './dom';
import { many } from './format';
import { inSlices } from './slices';
import { toggleEach, treeKey, type TreeOrders } from './tree_keys';
import { RowMaker } from './tree_row';
import { TreeRows } from './tree_rows';
import { ROW, Scroller } from './tree_scroll';
import { firstRows } from './tree_start';

const MARGIN = 6; // rows made above and below what is seen
const SETTLED_MS = 60;
const INDENT = { most: 16, share: 0.42 }; // pixels a level; of the grid's width for the deepest

class Tree implements View, TreeOrders {
  readonly key = 'tree';
  readonly title = 'Tree';
  readonly root: HTMLElement;
  private readonly rows: TreeRows;
  private readonly maker: RowMaker;
  private readonly scroller: Scroller;
  private readonly window = h('div', { class: 'tree-window', role: 'presentation' });
  private readonly grid: HTMLElement;
  private readonly status = h('span', { class: 'soft', id: 'tree-status', role: 'status' });
  private readonly fold = h('button', { class: 'button', id: 'tree-fold', 'aria-pressed': 'true', onclick: () => this.toggleFolding() }, 'Fold repeats');
  private made = new Map<number, HTMLElement>(); // by row
  private indent = INDENT.most;
  private frame = 0;
  private timer = 0;
  private isFetching = false;
  private isVisible = false;
  private isAtRest = false; // a row that is no node becomes the active one
  private work = 0; // the latest long work; what came before is stale

  constructor(private readonly app: App) {
    this.rows = new TreeRows(app.trace);
    this.maker = new RowMaker(app, this.rows.folder.next);
    const column = (kind: string, title: string, label: string): HTMLElement => h('div', { role: 'columnheader', class: `tree-${kind}`, title: label }, title);
    const head = h('div', { role: 'row', class: 'tree-row tree-head', 'aria-rowindex': 1 },
      column('id', 'id', 'The number in the trace'), column('total', 'total ms', 'With everything inside'), column('own', 'own ms', 'Without what it called'),
      column('memory', 'memory +', 'Memory in use at its end less that at its begin'), column('what', 'what', 'What it was'));
    const body = h('div', { class: 'tree-body', role: 'rowgroup' }, this.window);
    this.grid = h('div', {
      class: 'tree-grid', role: 'treegrid', tabindex: 0, id: 'tree-grid', 'aria-label': 'What called what', 'aria-describedby': 'tree-keys',
      onkeydown: (event: KeyboardEvent) => treeKey(event, this.rows, this.page, this),
      onclick: (event: MouseEvent) => this.click(event), ondblclick: (event: MouseEvent) => this.clickTwice(event),
    }, h('div', { role: 'rowgroup', class: 'tree-top' }, head), body);
    this.scroller = new Scroller(this.grid, body, head, () => this.schedule());
    this.root = h('section', { class: 'tree' }, this.tools(), this.grid);
    new ResizeObserver(() => this.resized()).observe(this.grid);
    this.start();
  }

  show(): void {
    this.isVisible = true;
    this.resized();
    this.scroller.reveal(this.rows.active, true);
  }

  focus(): void {
    this.grid.focus({ preventScroll: true });
  }

  hide(): void {
    this.isVisible = false;
  }

  selected(index: number): void {
    const { rows } = this;
    const isActive = this.isAtRest || (index >= 0 && rows.list.size > 0 && rows.folder.has(rows.list, rows.active, index));
    if (index >= 0 && !isActive) {
      const { changes } = rows, row = rows.reveal(index);
      if (rows.changes !== changes) this.resetRows();
      if (row >= 0) rows.active = row;
      if (this.isVisible) this.scroller.reveal(rows.active, true);
    }
    this.schedule();
  }

  found(hits: Hits | null): void {
    this.maker.hitsBefore = null;
    if (hits) {
      const before = (this.maker.hitsBefore = new Int32Array(hits.bits.length + 1));
      for (let i = 0; i < hits.bits.length; i++) before[i + 1] = before[i] + hits.bits[i];
    }
    this.redraw();
  }

  go(row: number): void {
    this.rows.active = row;
    this.scroller.reveal(row);
    if (this.rows.list.count[row] > 0) this.choose(row);
    else this.atRest(row);
  }

  // Nodes that are not shown have no details: those of their caller are shown meanwhile.
  private atRest(row: number): void {
    const { list } = this.rows, caller = list.parentOf(row), node = caller < 0 ? -1 : list.slowest[caller];
    this.isAtRest = true;
    this.app.select(node);
    this.isAtRest = false;
    if (node >= 0) this.status.textContent = `Details of #${this.app.trace.id[node]}, the caller of ${list.nodes[row] > 1 ? 'these' : 'this'} ${many(list.nodes[row], 'node')}`;
    this.schedule();
  }

  // A fold stands for its slowest node.
  choose(row: number): void {
    this.tellRows();
    this.rows.active = row;
    this.app.select(this.rows.list.slowest[row]);
    this.schedule();
  }

  changed(): void {
    this.resetRows();
    this.scroller.reveal(this.rows.active);
  }

  private get page(): number {
    return Math.max(1, Math.floor(this.scroller.height / ROW) - 1);
  }

  private tools(): HTMLElement {
    const button = (id: string, label: string, title: string, act: () => void): HTMLElement => h('button', { class: 'button', id, title, onclick: act }, label);
    return h('div', { class: 'tools' },
      button('tree-start', 'What took most', 'Show again the rows that took most', () => this.start()),
      button('tree-all', 'Open all', 'Open everything under the selected row', () => void this.openAll()),
      button('tree-close', 'Close all', 'Close everything', () => this.closeAll()), this.fold,
      h('p', { class: 'sr', id: 'tree-keys' }, 'Arrows move, open and close rows; star opens all rows of a level; U shows repeated calls one by one.'), this.status);
  }

  private start(): void {
    this.work++;
    this.rows.list = firstRows(this.rows.folder);
    this.rows.active = 0;
    this.changed();
  }

  private closeAll(): void {
    this.work++;
    this.rows.active = 0;
    this.rows.list = this.rows.folder.outermost();
    this.changed();
  }

  private toggleFolding(): void {
    const { folder } = this.rows;
    folder.isFolding = !folder.isFolding;
    this.fold.setAttribute('aria-pressed', String(folder.isFolding));
    this.start();
    this.selected(this.app.selected);
  }

  private async openAll(): Promise<void> {
    const work = ++this.work;
    this.status.textContent = 'Opening …';
    await inSlices(this.rows.openAll(this.rows.active), () => work !== this.work);
    this.changed();
  }

  private resetRows(): void {
    const { list } = this.rows;
    this.scroller.setRows(list.size);
    this.grid.setAttribute('aria-rowcount', String(list.size + 1));
    this.tellRows();
    this.measure();
    this.redraw();
  }

  private tellRows(): void {
    this.status.textContent = `${many(this.rows.list.size, 'row')} of ${many(this.app.trace.count, 'node')}`;
  }

  private resized(): void {
    if (!this.grid.clientWidth) return;
    this.scroller.resize();
    this.measure();
    this.redraw();
  }

  // Deep trees have less room for a level.
  private measure(): void {
    const { level, size } = this.rows.list;
    let deepest = 1;
    for (let row = 0; row < size; row++) if (level[row] > deepest) deepest = level[row];
    const indent = Math.min(INDENT.most, (this.grid.clientWidth * INDENT.share) / deepest);
    this.indent = indent > 4 ? Math.floor(indent) : indent;
  }

  // Makes all rows anew; schedule() keeps those that are still in sight.
  private redraw(): void {
    for (const element of this.made.values()) element.remove();
    this.made.clear();
    this.schedule();
  }

  private schedule(): void {
    this.frame ||= requestAnimationFrame(() => {
      this.frame = 0;
      if (this.isVisible) this.draw();
    });
  }

  private draw(): void {
    const { list, active } = this.rows, { offset, height } = this.scroller;
    const from = Math.max(0, Math.floor(offset / ROW) - MARGIN), to = Math.min(list.size, Math.ceil((offset + height) / ROW) + MARGIN);
    for (const [row, element] of this.made) {
      if (row >= from && row < to) continue;
      element.remove();
      this.made.delete(row);
    }
    for (let row = from; row < to; row++) {
      let element = this.made.get(row);
      if (!element) {
        element = this.maker.make(list, row, this.indent);
        this.made.set(row, element);
        // Readers who hear the page go through the rows in the order of the document.
        this.window.insertBefore(element, this.made.get(row + 1) ?? null);
      }
      element.setAttribute('aria-selected', String(row === active));
      element.style.transform = `translateY(${row * ROW - offset}px)`;
    }
    if (active >= from && active < to) this.grid.setAttribute('aria-activedescendant', `tree-row-${active}`);
    else this.grid.removeAttribute('aria-activedescendant');
    clearTimeout(this.timer);
    this.timer = window.setTimeout(() => void this.fetch(), SETTLED_MS);
  }

  // Values are unpacked for rows that stay for a moment, not for those that fly by.
  private async fetch(): Promise<void> {
    if (this.isFetching) return;
    this.isFetching = true;
    if (await this.maker.fetch()) this.redraw();
    this.isFetching = false;
  }

  private rowAt(event: MouseEvent): number {
    const element = (event.target as Element).closest<HTMLElement>('[data-row]');
    return element ? Number(element.dataset.row) : -1;
  }

  private click(event: MouseEvent): void {
    const row = this.rowAt(event), act = (event.target as Element).closest<HTMLElement>('[data-act]')?.dataset.act;
    if (row < 0) return;
    this.rows.active = row;
    if (act === 'each') toggleEach(this.rows, row);
    else if (act === 'toggle' || this.rows.list.count[row] === 0) this.rows.toggle(row);
    else return this.choose(row);
    this.changed();
  }

  private clickTwice(event: MouseEvent): void {
    const row = this.rowAt(event);
    if (row < 0 || (event.target as Element).closest('[data-act]')?.getAttribute('data-act')) return;
    this.rows.toggle(row);
    this.changed();
  }
}

export function treeView(app: App): View {
  return new Tree(app);
}
