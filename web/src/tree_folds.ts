// SPDX-License-Identifier: MIT
//
// Sibling nodes of one name as one row, as `cttool tree` folds them: under one node those that
// follow each other, so that the order in which things happened stays; under several folded nodes
// all of one name, whatever the order.
import { namesOf, type Names } from './same_name';
import type { Trace } from './trace';
import { RowList } from './tree_list';

export class Folder {
  isFolding = true;
  // Of a node in a fold that is shown: the next one of that fold.
  readonly next: Int32Array;
  private readonly names: Names;
  private readonly pass: Int32Array; // by name: in which pass `place` was set
  private readonly place: Int32Array;
  private passes = 0;

  constructor(private readonly trace: Trace) {
    this.names = namesOf(trace);
    this.next = new Int32Array(trace.count);
    this.pass = new Int32Array(this.names.count);
    this.place = new Int32Array(this.names.count);
  }

  outermost(): RowList {
    const rows = new RowList();
    this.addRange(rows, 0, this.trace.count - 1, false);
    return rows;
  }

  // What was called by the nodes of a row.
  children(of: RowList, row: number): RowList {
    const rows = new RowList(), isMerged = of.count[row] > 1;
    this.passes++;
    this.members(of, row, (node) => this.addRange(rows, node + 1, this.trace.last[node], isMerged));
    return rows;
  }

  // The nodes of a row, a row for each.
  each(of: RowList, row: number): RowList {
    const rows = new RowList();
    this.members(of, row, (node) => this.begin(rows, node));
    return rows;
  }

  has(of: RowList, row: number, node: number): boolean {
    const { names } = this, first = of.first[row];
    if (of.count[row] < 2) return of.count[row] === 1 && first === node;
    return first <= node && node <= of.last[row] && names.keyOf(first) === names.keyOf(node) && this.trace.depth[first] === this.trace.depth[node];
  }

  members(of: RowList, row: number, visit: (node: number) => void): void {
    let node = of.first[row];
    for (let left = of.count[row]; left > 0; left--) {
      const next = this.next[node];
      visit(node);
      node = next;
    }
  }

  private addRange(rows: RowList, from: number, to: number, isMerged: boolean): void {
    const { names, trace, passes } = this;
    let latest = -1;
    for (let node = from; node <= to; node = trace.last[node] + 1) {
      const key = this.isFolding ? names.keyOf(node) : -1;
      if (isMerged && this.isFolding) {
        if (this.pass[key] === passes) {
          this.append(rows, this.place[key], node);
          continue;
        }
        this.pass[key] = passes;
        this.place[key] = rows.size;
      } else if (key >= 0 && key === latest) {
        this.append(rows, rows.size - 1, node);
        continue;
      }
      latest = key;
      this.begin(rows, node);
    }
  }

  private begin(rows: RowList, node: number): void {
    const { trace } = this, row = rows.push();
    rows.first[row] = rows.last[row] = rows.slowest[row] = node;
    rows.count[row] = 1;
    rows.nodes[row] = trace.last[node] - node + 1;
    rows.level[row] = rows.state[row] = 0;
    rows.total[row] = trace.total[node];
    rows.own[row] = trace.own[node];
    rows.growth[row] = trace.growth[node];
  }

  private append(rows: RowList, row: number, node: number): void {
    const { trace } = this, growth = trace.growth[node];
    this.next[rows.last[row]] = node;
    rows.last[row] = node;
    rows.count[row]++;
    rows.nodes[row] += trace.last[node] - node + 1;
    rows.total[row] += trace.total[node];
    rows.own[row] += trace.own[node];
    if (!Number.isNaN(growth)) rows.growth[row] = (rows.growth[row] || 0) + growth;
    if (trace.total[node] > trace.total[rows.slowest[row]]) rows.slowest[row] = node;
  }
}
