// SPDX-License-Identifier: MIT
//
// The keys of a treegrid whose rows have the focus, as the ARIA patterns have them.
import type { TreeRows } from './tree_rows';
import { State } from './tree_list';

export interface TreeOrders {
  go(row: number): void; // the active row becomes this one
  changed(): void; // rows opened or closed
  choose(row: number): void;
}

const MANY = 2000; // siblings that "*" opens at once

// The row that a key leads to; -1 if it is none that moves.
function target(rows: TreeRows, key: string, page: number): number {
  const { active, list } = rows, end = list.size - 1;
  switch (key) {
    case 'ArrowDown': return Math.min(end, active + 1);
    case 'ArrowUp': return Math.max(0, active - 1);
    case 'PageDown': return Math.min(end, active + page);
    case 'PageUp': return Math.max(0, active - page);
    case 'Home': return 0;
    case 'End': return end;
    default: return -1;
  }
}

function openSiblings(rows: TreeRows): void {
  const { list } = rows, parent = list.parentOf(rows.active), level = list.level[rows.active];
  let left = MANY;
  for (let row = parent + 1; row < list.size && list.level[row] >= level && left > 0; row = list.endOf(row)) {
    if (list.count[row] === 0 || rows.isOpen(row)) continue;
    rows.open(row);
    left--;
  }
}

export function treeKey(event: KeyboardEvent, rows: TreeRows, page: number, orders: TreeOrders): void {
  if (event.altKey || event.metaKey || (event.ctrlKey && !/^(Home|End)$/.test(event.key)) || rows.list.size === 0) return;
  const { list, active } = rows, to = target(rows, event.key, page), isOpen = rows.isOpen(active);
  if (to >= 0) orders.go(to);
  else if (event.key === 'ArrowRight') {
    if (isOpen) orders.go(active + 1);
    else change(() => (list.count[active] === 0 ? rows.openRest(active) : rows.open(active)));
  } else if (event.key === 'ArrowLeft') {
    if (isOpen) change(() => rows.close(active));
    else if (list.parentOf(active) >= 0) orders.go(list.parentOf(active));
  } else if (event.key === '*') change(() => openSiblings(rows));
  else if (event.key === 'u' || event.key === 'U') change(() => toggleEach(rows, active));
  else if (event.key === 'Enter' || event.key === ' ') {
    if (list.count[active] === 0) change(() => rows.openRest(active));
    else orders.choose(active);
  } else return;
  event.preventDefault();

  function change(act: () => void): void {
    act();
    orders.changed();
  }
}

// A fold as its nodes one by one, and back.
export function toggleEach(rows: TreeRows, row: number): void {
  if (rows.list.state[row] === State.each) rows.close(row);
  else rows.openEach(row);
}
