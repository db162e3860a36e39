// SPDX-License-Identifier: MIT
//
// Where the boxes of the flame graph lie. Boxes are numbered row by row (a row is a depth) and
// from left to right in it, so that what is visible of a row is found by halving, and the children
// of a box are neighbours in the next row.
import { Flag, Kind, type Trace } from './trace';

export type Weight = 'time' | 'memory' | 'calls';
export const Mark = { threw: 1, open: 2 } as const;

export interface Layout {
  readonly weight: Weight;
  readonly count: number;
  readonly whole: number; // the widths of the first row together: ns, bytes or calls
  readonly rows: Int32Array; // the first box of each row, and the end
  readonly x: Float64Array;
  readonly width: Float64Array;
  readonly parent: Int32Array; // a box; -1 in the first row
  readonly node: Int32Array; // by box: its node, or the dearest one of several
  readonly marks: Uint8Array; // some of its nodes have this Mark
  readonly errors: Int32Array; // boxes of PHP's errors, which have no width
  readonly boxOf: Int32Array; // by node
  readonly times: Int32Array | null; // how many nodes a box is, if more than one can be
  readonly first: Int32Array | null; // the first of them
  readonly next: Int32Array | null; // by node: the one after it in its box, or -1
}

export const STRIDE = 1 << 15; // nodes between two chances for the page to do something else

export const outcomeMarks = Uint8Array.of(0, 0, Mark.threw, Mark.open);

function ownWeight(trace: Trace, weight: Weight, index: number): number {
  if (weight === 'calls') return trace.kind[index] === Kind.call ? 1 : 0;
  // Not what children freed under a node that does not tell its own growth.
  const own = Number.isNaN(trace.growth[index]) ? 0 : trace.ownMemory[index];
  return own > 0 ? own : 0;
}

// By node: the sum of what is its own before it, so that a difference is what lies under a node.
export function* sumsOf(trace: Trace, weight: Weight): Generator<void, Float64Array> {
  const sums = new Float64Array(trace.count + 1);
  for (let i = 0; i < trace.count; i++) {
    sums[i + 1] = sums[i] + ownWeight(trace, weight, i);
    if (i % STRIDE === 0) yield;
  }
  return sums;
}

export function* layInOrder(trace: Trace, weight: Weight): Generator<void, Layout> {
  const { count, depth, last, start, total } = trace;
  const sums = weight === 'time' ? null : yield* sumsOf(trace, weight);
  let deepest = 0;
  for (let i = 0; i < count; i++) if (depth[i] > deepest) deepest = depth[i];
  yield;
  const rows = new Int32Array(deepest + 2);
  for (let i = 0; i < count; i++) rows[depth[i] + 1]++;
  for (let row = 0; row <= deepest; row++) rows[row + 1] += rows[row];
  yield;
  const free = rows.slice();
  const x = new Float64Array(count), width = new Float64Array(count);
  const parent = new Int32Array(count), node = new Int32Array(count), boxOf = new Int32Array(count);
  const marks = new Uint8Array(count);
  const errors: number[] = [];
  yield;
  for (let i = 0; i < count; i++) {
    const box = free[depth[i]]++;
    boxOf[i] = box;
    node[box] = i;
    parent[box] = trace.parent[i] < 0 ? -1 : boxOf[trace.parent[i]];
    x[box] = sums ? sums[i] : start[i] - start[0];
    width[box] = sums ? sums[last[i] + 1] - sums[i] : total[i];
    marks[box] = outcomeMarks[trace.flags[i] & Flag.outcome];
    if (trace.kind[i] === Kind.error) errors.push(box);
    if (i % STRIDE === 0) yield;
  }
  const end = rows[1] - 1;
  const whole = count ? x[end] + width[end] : 0;
  return {
    weight, count, whole, rows, x, width, parent, node, marks, boxOf,
    errors: Int32Array.from(errors).sort(), times: null, first: null, next: null,
  };
}
