// SPDX-License-Identifier: MIT
//
// Which rows of the tree are shown: rows open and close, and the way to a node can be opened.
import type { Trace } from './trace';
import { Folder } from './tree_folds';
import { RowList, State } from './tree_list';

const STRIDE = 4000; // rows between two chances for the page to do something else

function setLevels(rows: RowList, level: number): RowList {
  rows.level.fill(level, 0, rows.size);
  return rows;
}

export class TreeRows {
  list = new RowList();
  active = 0; // the row that the keyboard is at
  changes = 0; // how often rows came or went
  readonly folder: Folder;

  constructor(private readonly trace: Trace) {
    this.folder = new Folder(trace);
  }

  isOpen(row: number): boolean {
    return this.list.state[row] !== State.closed;
  }

  close(row: number): void {
    if (!this.isOpen(row)) return;
    this.put(row + 1, this.list.endOf(row), new RowList());
    this.list.state[row] = State.closed;
  }

  open(row: number): void {
    if (this.isOpen(row) || !this.list.isParent(row)) return;
    if (this.list.inside(row) === 0) return this.openEach(row);
    this.put(row + 1, row + 1, setLevels(this.folder.children(this.list, row), this.list.level[row] + 1));
    this.list.state[row] = State.open;
  }

  // Shows the nodes of a fold one by one, in place of what they called together.
  openEach(row: number): void {
    if (this.list.count[row] < 2 || this.list.state[row] === State.each) return;
    this.close(row);
    this.put(row + 1, row + 1, setLevels(this.folder.each(this.list, row), this.list.level[row] + 1));
    this.list.state[row] = State.each;
  }

  // Shows what a rest row stands for; its siblings stay as they are.
  openRest(rest: number): void {
    const { list } = this, parent = list.parentOf(rest), level = list.level[rest];
    const all = parent < 0 ? this.folder.outermost() : this.folder.children(list, parent);
    const rows = new RowList();
    let shown = parent + 1;
    const from = shown;
    for (let i = 0; i < all.size; i++) {
      if (shown >= rest || list.first[shown] !== all.first[i]) {
        rows.copy(all, i, level, State.closed);
        continue;
      }
      const end = list.endOf(shown);
      for (; shown < end; shown++) rows.copy(list, shown, list.level[shown], list.state[shown]);
    }
    if (parent >= 0) list.state[parent] = State.open;
    const isAtRest = this.active === rest;
    this.put(from, rest + 1, rows);
    if (isAtRest) this.active = this.firstNew(from, rows.size);
  }

  toggle(row: number): void {
    if (this.list.count[row] === 0) this.openRest(row);
    else if (this.isOpen(row)) this.close(row);
    else this.open(row);
  }

  // Opens the row with everything under it, in slices.
  *openAll(row: number): Generator<void, void> {
    const { list, folder } = this, rows = new RowList(), level = list.level[row];
    const first = list.first[row];
    if (list.count[row] === 0 || list.inside(row) === 0) return;
    const open = [{ rows: folder.children(list, row), at: 0 }];
    while (open.length) {
      const top = open[open.length - 1];
      if (top.at === top.rows.size) {
        open.pop();
        continue;
      }
      const at = top.at++, isParent = top.rows.inside(at) > 0 && top.rows.count[at] > 0;
      rows.copy(top.rows, at, level + open.length, isParent ? State.open : State.closed);
      if (isParent) open.push({ rows: folder.children(top.rows, at), at: 0 });
      if (rows.size % STRIDE === 0) yield;
    }
    // Rows may have been opened and closed since; the row itself may be gone.
    if (list !== this.list || list.first[row] !== first || list.level[row] !== level) return;
    this.put(row + 1, list.endOf(row), rows);
    list.state[row] = State.open;
  }

  // Opens what hides a node, and returns its row.
  reveal(node: number): number {
    const way: number[] = [];
    for (let i = node; i >= 0; i = this.trace.parent[i]) way.push(i);
    let parent = -1;
    for (let i = way.pop(); i !== undefined; i = way.pop()) {
      if (parent >= 0 && !this.isOpen(parent)) this.open(parent);
      let row = this.find(parent, i);
      if (row < 0) return -1;
      // What folded nodes called together is followed where it is shown; else they are shown one by one.
      if (this.list.count[row] > 1 && (i === node || !this.isOpen(row) || this.list.state[row] === State.each)) {
        this.openEach(row);
        row = this.find(row, i);
      }
      parent = row;
    }
    return parent;
  }

  // Replaces rows; the active one stays the same, or becomes the one above.
  put(from: number, to: number, rows: RowList): void {
    this.list.splice(from, to - from, rows);
    this.changes++;
    if (this.active >= to) this.active += rows.size - (to - from);
    else if (this.active >= from) this.active = Math.max(0, from - 1);
  }

  // The row that has a node, among those next under a row.
  private find(parent: number, node: number): number {
    const { list, folder } = this, level = parent < 0 ? 0 : list.level[parent] + 1;
    for (let row = parent + 1; row < list.size && list.level[row] >= level; row++) {
      if (list.level[row] > level) continue;
      if (folder.has(list, row, node)) return row;
      if (list.count[row] > 0) continue;
      this.openRest(row);
      return this.find(parent, node);
    }
    return -1;
  }

  private firstNew(from: number, many: number): number {
    const level = this.list.level[from];
    for (let row = from; row < from + many; row++) if (this.list.level[row] === level && !this.isOpen(row)) return row;
    return from;
  }
}
