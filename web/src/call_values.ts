// SPDX-License-Identifier: MIT
//
// The values of most calls stand in the page as a few bytes, which src/libs/ctreport/ct_call_bytes.h
// describes. Here they become the line of JSON that they stand for.
import { Column } from './columns';

export interface Block {
  bytes: Uint8Array;
  starts: Int32Array; // of entries, and where the last one ends
  chars?: string; // a character for each byte: itself, if it is ASCII
}

const Code = { digits: 3, ascii: 4, array: 8, object: 9, resource: 10, next: 11, cut: 12, notFollowed: 13 };
const words = ['null', 'false', 'true'];
const cutMark = '**CUT**';
const oneByteEach = new TextDecoder('latin1');
const utf8 = new TextDecoder();

export function charsOf(block: Block): string {
  return (block.chars ??= oneByteEach.decode(block.bytes));
}

// Where the entry ends that begins there: a line, or bytes with their number.
export function endOfEntry(bytes: Uint8Array, at: number): number {
  if (bytes[at] === 0x7b) return bytes.indexOf(10, at) + 1 || bytes.length;
  const column = new Column(bytes, at + 1);
  return Math.min(column.varint() + column.at, bytes.length);
}

class Reader {
  private readonly from: Column;
  private readonly bytes: Uint8Array;
  private readonly chars: string;

  constructor(
    block: Block,
    at: number,
    private readonly classes: string[],
  ) {
    this.bytes = block.bytes;
    this.chars = charsOf(block);
    this.from = new Column(block.bytes, at);
  }

  call(): string {
    const { from } = this;
    const parts = this.bytes[from.at++];
    from.varint();
    let line = parts & 1 ? `{"this":${this.value()},"args":[` : '{"args":[';
    const many = from.varint();
    for (let i = 0; i < many; ++i) line += (i ? ',' : '') + this.value();
    if (parts & 2) return `${line}],"returned":${this.value()}}`;
    return parts & 4 ? `${line}],"thrown":${this.value()}}` : `${line}]}`;
  }

  // Arrays are no deeper than 32.
  private value(): string {
    const { from } = this;
    const code = this.bytes[from.at++];
    if (code < Code.digits) return words[code];
    switch (code) {
      case Code.digits:
        return this.slice(this.bytes[from.at++]);
      case Code.array:
        return this.array();
      case Code.object: {
        const name = from.varint();
        return `{${name ? `"class":${this.classes[name - 1]},` : ''}"handle":${from.varint()}}`;
      }
      case Code.resource:
        return `{"resource":${this.value()},"handle":${this.value()}}`;
      case Code.notFollowed:
        return `["${cutMark}"]`;
    }
    // A text of ASCII or not, whole or cut.
    const size = from.varint();
    const text =
      code % 2 ? utf8.decode(this.bytes.subarray(from.at, (from.at += size))) : this.slice(size);
    return JSON.stringify(code > Code.ascii + 1 ? text + cutMark : text);
  }

  private slice(size: number): string {
    const { from } = this;
    return this.chars.slice(from.at, (from.at += size));
  }

  // Of keys that are equal as text the last counts.
  private array(): string {
    const { from } = this;
    const members = new Map<string, string>();
    let isList = true;
    let cut = false;
    const many = from.varint();
    for (let i = 0; i < many && !cut; ++i) {
      const code = this.bytes[from.at];
      if (code === Code.next || code === Code.cut) ++from.at;
      else isList = false;
      cut = code === Code.cut;
      if (cut) continue;
      const said = code === Code.next ? String(i) : this.value();
      const key = said[0] === '"' ? said : `"${said}"`;
      members.delete(key);
      members.set(key, this.value());
    }
    const items = isList ? [...members.values()] : Array.from(members, ([key, value]) => `${key}:${value}`);
    if (cut) items.push(isList ? `"${cutMark}"` : `"${cutMark}":true`);
    return isList ? `[${items}]` : `{${items}}`;
  }
}

// The line of JSON of a block's entry. The names of classes are JSON.
export function lineOf(block: Block, entry: number, classes: string[]): string {
  const { bytes, starts } = block;
  return bytes[starts[entry]] === 0x7b
    ? utf8.decode(bytes.subarray(starts[entry], starts[entry + 1] - 1))
    : new Reader(block, starts[entry], classes).call();
}
