// SPDX-License-Identifier: MIT
//
// What the tree shows first: the rows that took most, with the way down to them, which explain where
// the time went. What their siblings took is one row.
import { Folder } from './tree_folds';
import { RowList, State } from './tree_list';

const MOST = 40; // rows

interface Chosen {
  readonly rows: RowList; // it, and its siblings
  readonly at: number;
  children: RowList | null; // read once it is chosen
  readonly below: Chosen[];
}

// The dearest rows, at most so many, dearest first.
function dearest(rows: RowList, most: number): number[] {
  const best: number[] = [];
  for (let row = 0; row < rows.size; row++) {
    const total = rows.total[row];
    if (best.length === most && total <= rows.total[best[most - 1]]) continue;
    let at = best.length;
    while (at > 0 && rows.total[best[at - 1]] < total) at--;
    best.splice(at, 0, row);
    if (best.length > most) best.pop();
  }
  return best;
}

function choose(folder: Folder, outermost: RowList): Chosen[] {
  const top: Chosen[] = [];
  const waiting: { rows: RowList; at: number; into: Chosen[] }[] = [];
  const wait = (rows: RowList, into: Chosen[]): void => {
    for (const at of dearest(rows, MOST)) waiting.push({ rows, at, into });
  };
  wait(outermost, top);
  for (let left = MOST; left > 0 && waiting.length; left--) {
    let best = 0;
    waiting.forEach(({ rows, at }, i) => {
      if (rows.total[at] > waiting[best].rows.total[waiting[best].at]) best = i;
    });
    const [{ rows, at, into }] = waiting.splice(best, 1);
    const chosen: Chosen = { rows, at, children: rows.inside(at) > 0 ? folder.children(rows, at) : null, below: [] };
    into.push(chosen);
    if (chosen.children) wait(chosen.children, chosen.below);
  }
  return top;
}

function pushRest(list: RowList, rows: RowList, shown: Chosen[], level: number): void {
  const row = list.push();
  const isShown = new Set(shown.map(({ at }) => at));
  list.first[row] = list.last[row] = list.slowest[row] = rows.first[0];
  list.count[row] = list.nodes[row] = list.state[row] = list.total[row] = list.own[row] = 0;
  list.growth[row] = NaN;
  list.level[row] = level;
  for (let at = 0; at < rows.size; at++) {
    if (isShown.has(at)) continue;
    list.nodes[row] += rows.nodes[at];
    list.total[row] += rows.total[at];
    list.own[row] += rows.own[at];
    if (!Number.isNaN(rows.growth[at])) list.growth[row] = (list.growth[row] || 0) + rows.growth[at];
  }
}

// The rows that the tree begins with.
export function firstRows(folder: Folder): RowList {
  const list = new RowList(), outermost = folder.outermost();
  const work: { chosen?: Chosen; rows: RowList; shown: Chosen[]; level: number }[] = [];
  const add = (rows: RowList, shown: Chosen[], level: number): void => {
    if (shown.length < rows.size) work.push({ rows, shown, level });
    shown.sort((a, b) => b.at - a.at);
    for (const chosen of shown) work.push({ chosen, rows, shown, level });
  };
  add(outermost, choose(folder, outermost), 0);
  for (let next = work.pop(); next; next = work.pop()) {
    const { chosen, rows, shown, level } = next;
    if (!chosen) {
      pushRest(list, rows, shown, level);
      continue;
    }
    const { children, below } = chosen;
    const isAll = children !== null && below.length === children.size;
    list.copy(rows, chosen.at, level, below.length === 0 ? State.closed : isAll ? State.open : State.partly);
    if (children && below.length) add(children, below, level + 1);
  }
  return list;
}
