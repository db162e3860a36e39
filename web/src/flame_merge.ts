// SPDX-License-Identifier: MIT
//
// The merged layout: equal nodes under equal nodes are one box, and among siblings the heaviest
// stands first. Level by level, so that nothing recurses and boxes come in the order of a layout.
import { outcomeMarks, STRIDE, sumsOf, type Layout, type Weight } from './flame_layout';
import { namesOf, type Names } from './same_name';
import { Flag, Kind, type Trace } from './trace';

// A box that is not placed yet, because its siblings are not all known.
interface Group {
  readonly first: number; // nodes
  last: number;
  dearest: number;
  times: number;
  width: number;
  most: number; // the width of the dearest
  marks: number;
}

class Merger {
  readonly next: Int32Array;
  readonly boxOf: Int32Array;
  readonly x: Float64Array;
  readonly width: Float64Array;
  readonly parent: Int32Array;
  readonly node: Int32Array;
  readonly times: Int32Array;
  readonly first: Int32Array;
  readonly marks: Uint8Array;
  readonly rows = [0];
  readonly errors: number[] = [];
  boxes = 0;
  private readonly names: Names;
  private readonly pass: Int32Array; // by name: under which box `place` was set
  private readonly place: Int32Array;
  private groups: Group[] = [];

  constructor(private readonly trace: Trace, private readonly sums: Float64Array | null) {
    const { count } = trace;
    this.names = namesOf(trace);
    this.pass = new Int32Array(this.names.count).fill(-1);
    this.place = new Int32Array(this.names.count);
    this.next = new Int32Array(count).fill(-1);
    this.boxOf = new Int32Array(count);
    this.x = new Float64Array(count);
    this.width = new Float64Array(count);
    this.parent = new Int32Array(count);
    this.node = new Int32Array(count);
    this.times = new Int32Array(count);
    this.first = new Int32Array(count);
    this.marks = new Uint8Array(count);
  }

  // `under` is a number that no other siblings have.
  add(i: number, under: number): void {
    const { trace, sums, groups } = this;
    const key = this.names.keyOf(i);
    const width = sums ? sums[trace.last[i] + 1] - sums[i] : trace.total[i];
    const marks = outcomeMarks[trace.flags[i] & Flag.outcome];
    if (this.pass[key] !== under) {
      this.pass[key] = under;
      this.place[key] = groups.length;
      groups.push({ first: i, last: i, dearest: i, times: 1, width, most: width, marks });
      return;
    }
    const group = groups[this.place[key]];
    this.next[group.last] = i;
    group.last = i;
    group.times++;
    group.width += width;
    group.marks |= marks;
    if (width > group.most) {
      group.most = width;
      group.dearest = i;
    }
  }

  // Places the siblings that were added, under a box, or -1.
  put(parent: number): void {
    if (this.groups.length > 1) this.groups.sort((a, b) => b.width - a.width || a.first - b.first);
    let x = parent < 0 ? 0 : this.x[parent];
    for (const group of this.groups) {
      const box = this.boxes++;
      this.x[box] = x;
      x += this.width[box] = group.width;
      this.parent[box] = parent;
      this.node[box] = group.dearest;
      this.times[box] = group.times;
      this.first[box] = group.first;
      this.marks[box] = group.marks;
      if (this.trace.kind[group.first] === Kind.error) this.errors.push(box);
    }
    if (this.groups.length) this.groups = [];
  }

  *run(): Generator<void, void> {
    const { count, last } = this.trace;
    let work = 0;
    for (let i = 0; i < count; i = last[i] + 1) this.add(i, count);
    this.put(-1);
    for (let box = 0; box < this.boxes; box++) {
      if (box === this.rows[this.rows.length - 1]) this.rows.push(this.boxes);
      for (let i = this.first[box]; i >= 0; i = this.next[i]) {
        this.boxOf[i] = box;
        // A box may have very many nodes, and a node very many children.
        if (++work % STRIDE === 0) yield;
        for (let child = i + 1; child <= last[i]; child = last[child] + 1) {
          this.add(child, box);
          if (++work % STRIDE === 0) yield;
        }
      }
      this.put(box);
    }
  }
}

export function* layMerged(trace: Trace, weight: Weight): Generator<void, Layout> {
  const sums = weight === 'time' ? null : yield* sumsOf(trace, weight);
  const merger = new Merger(trace, sums);
  yield;
  yield* merger.run();
  const end = merger.boxes;
  const { x, width, parent, node, marks, times, first, boxOf, next } = merger;
  let whole = 0;
  for (let box = 0; box < (merger.rows[1] ?? 0); box++) whole += width[box];
  return {
    weight, count: end, whole, rows: Int32Array.from(merger.rows), errors: Int32Array.from(merger.errors),
    x: x.subarray(0, end), width: width.subarray(0, end), parent: parent.subarray(0, end),
    node: node.subarray(0, end), marks: marks.subarray(0, end), times: times.subarray(0, end),
    first: first.subarray(0, end), boxOf, next,
  };
}
