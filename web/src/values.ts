// SPDX-License-Identifier: MIT
//
// Values of nodes: a line of JSON each, or what becomes one, in blocks that are unpacked when somebody looks
// at them.
import { readBlock } from './blocks';
import { type Block, endOfEntry, lineOf } from './call_values';
import { Flag, Kind, Trace } from './trace';

// So that a page of a large trace keeps to some memory: unpacked bytes, not counting the newest block. What
// is made of them takes twice as much again.
const mostKept = 32 << 20;

const classes = 65;

// The number of bits of a whole number that is not negative.
function bitWidth(value: number): number {
  const high = Math.floor(value / 2 ** 32);
  return high > 0 ? 64 - Math.clz32(high) : 32 - Math.clz32(value);
}

function costClass(trace: Trace, index: number): number {
  return trace.kind[index] === Kind.call ? bitWidth(trace.total[index]) : classes - 1;
}

export class Values {
  private readonly position: Int32Array; // of a node's line in all of them, -1 none
  private readonly firsts: number[] = []; // position of each block's first line
  private readonly kept = new Map<number, Block>();
  private readonly waited = new Map<number, Promise<Block>>();
  private size = 0;
  private readonly classes: string[]; // names, as JSON

  constructor(private readonly trace: Trace) {
    this.classes = trace.classes.map((name) => JSON.stringify(name));
    this.position = new Int32Array(trace.count).fill(-1);
    const next = new Int32Array(classes);
    for (let i = 0; i < trace.count; ++i) if (trace.flags[i] & Flag.hasValues) ++next[costClass(trace, i)];
    let before = 0;
    for (let c = classes - 1; c >= 0; --c) {
      const many = next[c];
      next[c] = before;
      before += many;
    }
    for (let i = 0; i < trace.count; ++i)
      if (trace.flags[i] & Flag.hasValues) this.position[i] = next[costClass(trace, i)]++;
    let first = 0;
    for (const lines of trace.meta.blocks) {
      this.firsts.push(first);
      first += Math.abs(lines);
    }
  }

  get blockCount(): number {
    return this.firsts.length;
  }

  // The block that has a node's line; -1 if the node has none.
  blockOf(index: number): number {
    const position = this.position[index];
    if (position === undefined || position < 0) return -1;
    let low = 0;
    let high = this.firsts.length - 1;
    while (low < high) {
      const middle = (low + high + 1) >> 1;
      if (this.firsts[middle] <= position) low = middle;
      else high = middle - 1;
    }
    return high;
  }

  // True where a line is not in the page, because that would have been too large.
  isLeftOut(index: number): boolean {
    const block = this.blockOf(index);
    return block >= 0 && this.trace.meta.blocks[block] < 0;
  }

  // Null if the node has no values here. Rejects where the page's data are damaged.
  async line(index: number): Promise<string | null> {
    const block = this.blockOf(index);
    if (block < 0 || this.isLeftOut(index)) return null;
    return this.lineIn(await this.block(block), index, block);
  }

  // What is unpacked already; undefined if it is not.
  peek(index: number): string | null | undefined {
    const block = this.blockOf(index);
    if (block < 0 || this.isLeftOut(index)) return null;
    const kept = this.kept.get(block);
    return kept && this.lineIn(kept, index, block);
  }

  // Nodes in the order of their lines.
  order(): Int32Array {
    let many = 0;
    for (let i = 0; i < this.position.length; ++i) if (this.position[i] >= 0) ++many;
    const nodes = new Int32Array(many);
    for (let i = 0; i < this.position.length; ++i) if (this.position[i] >= 0) nodes[this.position[i]] = i;
    return nodes;
  }

  // A whole block, for searches, and the place of its first entry; null where it was left out.
  async entries(block: number): Promise<{ first: number; block: Block } | null> {
    if (this.trace.meta.blocks[block] < 0) return null;
    return { first: this.firsts[block], block: await this.block(block) };
  }

  lineAt(block: Block, entry: number): string {
    return lineOf(block, entry, this.classes);
  }

  private lineIn(block: Block, index: number, number: number): string | null {
    const at = this.position[index] - this.firsts[number];
    if (at + 1 >= block.starts.length) return null;
    return this.lineAt(block, at);
  }

  private block(number: number): Promise<Block> {
    const kept = this.kept.get(number);
    if (kept) return Promise.resolve(kept);
    let waited = this.waited.get(number);
    if (!waited) {
      waited = this.unpack(number).finally(() => this.waited.delete(number));
      this.waited.set(number, waited);
    }
    return waited;
  }

  private async unpack(number: number): Promise<Block> {
    const bytes = await readBlock(`values-${number}`);
    const starts = new Int32Array(Math.abs(this.trace.meta.blocks[number]) + 1);
    for (let entry = 1; entry < starts.length; ++entry) starts[entry] = endOfEntry(bytes, starts[entry - 1]);
    this.forget();
    const block = { bytes, starts };
    this.kept.set(number, block);
    this.size += bytes.length;
    return block;
  }

  // The oldest blocks go.
  private forget(): void {
    for (const [number, block] of this.kept) {
      if (this.size <= mostKept) return;
      this.kept.delete(number);
      this.size -= block.bytes.length;
    }
  }
}

export { briefCall } from './brief';
