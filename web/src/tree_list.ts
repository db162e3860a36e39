// SPDX-License-Identifier: MIT
//
// Rows of the tree as columns, for there may be a million. A row is a node, a fold of nodes of one
// name, or the rest: what its siblings that are shown leave out.
export const State = { closed: 0, open: 1, partly: 2, each: 3 } as const;

export class RowList {
  size = 0;
  first = new Int32Array(16); // of its nodes, in the order of their fold
  last = new Int32Array(16);
  count = new Int32Array(16); // how many nodes; 0: the rest
  nodes = new Int32Array(16); // they, and all under them
  slowest = new Int32Array(16);
  level = new Int32Array(16);
  state = new Uint8Array(16);
  total = new Float64Array(16); // sums
  own = new Float64Array(16);
  growth = new Float64Array(16); // NaN if none of them tells

  // Returns the number of a new row, to be filled.
  push(): number {
    if (this.size === this.first.length) this.grow(this.size * 2);
    return this.size++;
  }

  copy(from: RowList, at: number, level: number, state: number): void {
    const row = this.push();
    for (const column of this.columns()) this[column][row] = from[column][at];
    this.level[row] = level;
    this.state[row] = state;
  }

  // Puts other rows in the place of `gone` rows.
  splice(at: number, gone: number, rows: RowList): void {
    const size = this.size - gone + rows.size;
    if (size > this.first.length) this.grow(Math.max(size, Math.ceil(this.first.length * 1.5)));
    for (const column of this.columns()) {
      this[column].copyWithin(at + rows.size, at + gone, this.size);
      this[column].set(rows[column].subarray(0, rows.size) as never, at);
    }
    this.size = size;
  }

  // Behind the row and all that hangs on it.
  endOf(row: number): number {
    let end = row + 1;
    while (end < this.size && this.level[end] > this.level[row]) end++;
    return end;
  }

  // -1: it has none.
  parentOf(row: number): number {
    let above = row - 1;
    while (above >= 0 && this.level[above] >= this.level[row]) above--;
    return above;
  }

  // True where there is something to open: what lies under its nodes, or the nodes of a fold.
  isParent(row: number): boolean {
    return this.count[row] > 0 && this.nodes[row] > 1;
  }

  // All nodes under its nodes.
  inside(row: number): number {
    return this.nodes[row] - this.count[row];
  }

  private columns() {
    return ['first', 'last', 'count', 'nodes', 'slowest', 'level', 'state', 'total', 'own', 'growth'] as const;
  }

  private grow(room: number): void {
    const grown = <T extends Int32Array | Uint8Array | Float64Array>(column: T, into: T): T => (into.set(column as never), into);
    for (const column of ['first', 'last', 'count', 'nodes', 'slowest', 'level'] as const) this[column] = grown(this[column], new Int32Array(room));
    for (const column of ['total', 'own', 'growth'] as const) this[column] = grown(this[column], new Float64Array(room));
    this.state = grown(this.state, new Uint8Array(room));
  }
}
