// SPDX-License-Identifier: MIT
//
// What is written on boxes: a node's name, cut to the room that there is so that its telling end
// stays, which is the method or the file.
import { visible } from './dom';
import { Kind, nameOf, type Trace } from './trace';

const LEAST = 3; // characters

export class Labels {
  private readonly known: string[] = []; // by function
  private room = 1; // for an ASCII character, pixels

  constructor(private readonly trace: Trace, private readonly context: CanvasRenderingContext2D) {}

  // To be called when the canvas has its font, which is one of equal widths.
  measure(): void {
    this.room = this.context.measureText('0123456789').width / 10 || 1;
  }

  of(node: number): string {
    const { kind, name } = this.trace;
    if (kind[node] !== Kind.call || name[node] < 0) return visible(nameOf(this.trace, node));
    return (this.known[name[node]] ??= visible(nameOf(this.trace, node)));
  }

  // The label of a node with something behind it, in so many pixels; empty if nothing fits.
  fit(node: number, room: number, before: string, behind: string): string {
    if (room < LEAST * this.room) return '';
    const label = this.of(node);
    const short = shortened(label), at = short.indexOf('::'), member = at < 0 ? short : short.slice(at + 2);
    const ends = at < 0 ? [] : [`…::${member}${behind}`, `…::${member}`, `::${member}`, member];
    for (const whole of [label + behind, short + behind, short, ...ends]) {
      if (this.width(before + whole) <= room) return before + whole;
    }
    return this.cut(before + member, room);
  }

  private width(text: string): number {
    return /^[ -~…]*$/.test(text) ? text.length * this.room : this.context.measureText(text).width;
  }

  private cut(text: string, room: number): string {
    const parts = [...text.slice(0, Math.ceil(room / this.room) + 1)];
    while (parts.length && this.width(parts.join('')) + this.room > room) parts.pop();
    return parts.length < LEAST - 1 ? '' : `${parts.join('')}…`;
  }
}

// Without namespaces and folders: they are the same in box after box.
function shortened(label: string): string {
  const path = /^include .*?([^/]*)$/.exec(label);
  if (path) return path[1];
  return label.replace(/^[^\s(]*\\(?=[^\\]+$)/, '');
}
