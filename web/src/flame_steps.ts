// SPDX-License-Identifier: MIT
//
// From a box to its parent, its widest child, its neighbours.
import type { Layout } from './flame_layout';

export type StepKey = 'ArrowUp' | 'ArrowDown' | 'ArrowLeft' | 'ArrowRight' | 'Home';

// The widest child; -1 if none has a width.
function childOf(layout: Layout, box: number, row: number): number {
  const { rows, parent, width } = layout;
  if (row + 2 >= rows.length) return -1;
  let low = rows[row + 1], high = rows[row + 2];
  while (low < high) {
    const middle = (low + high) >>> 1;
    if (parent[middle] < box) low = middle + 1;
    else high = middle;
  }
  let best = -1;
  for (; low < rows[row + 2] && parent[low] === box; low++) {
    if (width[low] > (best < 0 ? 0 : width[best])) best = low;
  }
  return best;
}

// The next one in the row that is wide enough to be seen, be it a cousin; else the next with a width.
function besideOf(layout: Layout, box: number, row: number, step: number, narrow: number): number {
  const { rows, width } = layout;
  let first = -1;
  for (let at = box + step; at >= rows[row] && at < rows[row + 1]; at += step) {
    if (width[at] >= narrow) return at;
    if (first < 0 && width[at] > 0) first = at;
  }
  return first;
}

// The box that a key leads to; -1 if there is none. `narrow` is a width that can just be seen.
export function nextBox(layout: Layout, box: number, row: number, key: StepKey, narrow: number): number {
  if (box < 0 || key === 'Home') return layout.count ? 0 : -1;
  if (key === 'ArrowUp') return layout.parent[box];
  if (key === 'ArrowDown') return childOf(layout, box, row);
  return besideOf(layout, box, row, key === 'ArrowLeft' ? -1 : 1, narrow);
}
