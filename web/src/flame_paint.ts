// SPDX-License-Identifier: MIT
//
// Draws the boxes of a layout that can be seen, and of those too narrow to be seen one sliver for
// all in a pixel. What it costs depends on the pixels, hardly on the nodes.
import { COVERED, type Tone } from './flame_colours';
import { Mark, type Layout } from './flame_layout';
import type { Labels } from './flame_text';

// Where rows are drawn, in pixels, and which part of the layout's width.
export interface Pane {
  from: number;
  to: number;
  width: number;
  height: number;
  top: number; // what is scrolled out above
  rowHeight: number;
}

export interface Look {
  toneOf(node: number, isShaded: boolean): Tone;
  readonly error: string; // colours
  readonly ground: string;
}

const NARROW = 0.3; // pixels: slivers of less are not drawn, unless a search found something there
const LABELLED = 24; // pixels: boxes of less have no text

// The first box from `low` on that begins at x or later.
function firstFrom(x: Float64Array, low: number, high: number, at: number): number {
  while (low < high) {
    const middle = (low + high) >>> 1;
    if (x[middle] < at) low = middle + 1;
    else high = middle;
  }
  return low;
}

// The same, quick where that is near.
function nextFrom(x: Float64Array, low: number, high: number, at: number): number {
  let step = 1;
  while (low + step < high && x[low + step] < at) step *= 2;
  return firstFrom(x, low + (step >> 1), Math.min(high, low + step), at);
}

export class Painter {
  drawn = 0; // boxes and slivers, in the last picture
  hitsBefore: Int32Array | null = null; // by box: how many boxes before it have a hit
  private readonly before: Float64Array; // by box: the widths of all before it together
  private pane!: Pane;
  private scale = 1;
  private colour = '';
  private run = ''; // the colour of slivers next to each other, and where they are
  private runLeft = 0;
  private runRight = -1;
  private readonly runs = new Map<string, number[]>(); // of a row, by colour: changing that costs most

  constructor(readonly layout: Layout, private readonly context: CanvasRenderingContext2D,
    private readonly look: Look, private readonly labels: Labels | null) {
    const { count, width } = layout;
    this.before = new Float64Array(count + 1);
    for (let box = 0; box < count; box++) this.before[box + 1] = this.before[box] + width[box];
  }

  paint(pane: Pane): void {
    this.pane = pane;
    this.scale = pane.width / (pane.to - pane.from);
    this.drawn = 0;
    this.colour = '';
    const { rows } = this.layout;
    const first = Math.max(0, Math.floor(pane.top / pane.rowHeight));
    const end = Math.min(rows.length - 1, Math.ceil((pane.top + pane.height) / pane.rowHeight));
    // Where rows are lower than a pixel, some stand for all.
    const step = Math.max(1, Math.floor(1 / pane.rowHeight));
    for (let row = first; row < end; row += step) this.row(row, row * pane.rowHeight - pane.top);
  }

  // The box at a place of the layout; -1 if there is none. `slack` is how far beside it counts.
  at(row: number, place: number, slack: number): number {
    const { rows, x, width } = this.layout;
    if (row < 0 || row >= rows.length - 1) return -1;
    const box = this.wide(rows[row], firstFrom(x, rows[row], rows[row + 1], place + slack) - 1);
    return box >= rows[row] && width[box] > 0 && x[box] + width[box] + slack >= place ? box : -1;
  }

  // The last box up to `box` that has a width; `low` if none has.
  private wide(low: number, box: number): number {
    while (box > low && this.layout.width[box] === 0) box--;
    return box;
  }

  private hasHit(box: number, end: number): boolean {
    return this.hitsBefore !== null && this.hitsBefore[end] > this.hitsBefore[box];
  }

  private row(row: number, y: number): void {
    const { rows, x, width } = this.layout, { from, to } = this.pane, { scale } = this;
    const end = rows[row + 1];
    let box = Math.max(rows[row], this.wide(rows[row], firstFrom(x, rows[row], end, from) - 1));
    while (box < end && x[box] < to) {
      const left = (x[box] - from) * scale, right = left + width[box] * scale;
      if (right - left >= 1) {
        if (right > 0) this.box(box, left, right, y);
        box++;
        continue;
      }
      const column = Math.floor(left);
      let after = nextFrom(x, box, end, from + (column + 1) / scale);
      if (after <= box) after = box + 1;
      // Only the last one of them can reach beyond this column of pixels.
      const tail = this.wide(box, after - 1);
      if (tail > box && width[tail] * scale >= 1) after = tail;
      const reach = (x[after - 1] + width[after - 1] - from) * scale - left;
      const isHit = this.hasHit(box, after);
      if (column >= 0 && (reach >= NARROW || isHit)) this.sliver(box, column, isHit, (this.before[after] - this.before[box]) * scale);
      box = after;
    }
    this.endRuns(y);
  }

  private fill(colour: string): void {
    if (colour === this.colour) return;
    this.colour = colour;
    this.context.fillStyle = colour;
  }

  // A crowd is as strong as the part of the pixel that it covers, else it would seem to fill its caller.
  private sliver(box: number, column: number, isHit: boolean, covered: number): void {
    const tone = this.look.toneOf(this.layout.node[box], false);
    const level = isHit ? COVERED.length - 1 : Math.min(COVERED.length - 1, Math.floor(covered * COVERED.length));
    const colour = this.hitsBefore && !isHit ? tone.faded : tone.thin[level];
    this.drawn++;
    if (this.run !== colour || column > this.runRight) {
      this.endRun();
      this.run = colour;
      this.runLeft = column;
    }
    this.runRight = column + 1;
  }

  private endRun(): void {
    if (this.runRight < 0) return;
    const runs = this.runs.get(this.run);
    if (runs) runs.push(this.runLeft, this.runRight);
    else this.runs.set(this.run, [this.runLeft, this.runRight]);
    this.runRight = -1;
  }

  private endRuns(y: number): void {
    this.endRun();
    for (const [colour, runs] of this.runs) {
      if (runs.length) this.fill(colour);
      for (let i = 0; i < runs.length; i += 2) this.rect(runs[i], runs[i + 1], y);
      runs.length = 0;
    }
  }

  private rect(left: number, right: number, y: number): void {
    const { rowHeight } = this.pane;
    this.context.fillRect(left, y, right - left, rowHeight > 4 ? rowHeight - 1 : Math.max(1, rowHeight));
  }

  private box(box: number, left: number, right: number, y: number): void {
    this.endRun();
    const { layout, pane } = this, node = layout.node[box];
    const tone = this.look.toneOf(node, true), isFaded = this.hitsBefore !== null && !this.hasHit(box, box + 1);
    const start = Math.max(0, Math.round(left)), end = Math.min(pane.width, Math.round(right));
    this.fill(isFaded ? tone.faded : tone.fill);
    this.rect(start, Math.max(start + 1, end - (end - start > 3 && this.labels ? 1 : 0)), y);
    this.drawn++;
    if (!this.labels) return;
    if (layout.marks[box]) this.mark(layout.marks[box], start, end, y);
    if (end - start < LABELLED) return;
    const times = layout.times?.[box] ?? 1;
    const mark = layout.marks[box] & Mark.threw ? '↯ ' : layout.marks[box] & Mark.open ? '⋯ ' : '';
    const text = this.labels.fit(node, end - start - 8, mark, times > 1 ? ` × ${times}` : '');
    if (!text) return;
    this.fill(isFaded ? tone.fadedText : tone.text);
    this.context.fillText(text, start + 4, y + pane.rowHeight / 2);
  }

  // Threw: a corner; never ended: its right edge is torn.
  private mark(marks: number, left: number, right: number, y: number): void {
    const { context, look } = this, low = this.pane.rowHeight - 1;
    if (marks & Mark.threw) {
      const size = Math.min(9, right - left);
      this.fill(look.error);
      context.beginPath();
      context.moveTo(right - 1 - size, y);
      context.lineTo(right - 1, y);
      context.lineTo(right - 1, y + size);
      context.fill();
    }
    if (marks & Mark.open && right - left > 6) {
      this.fill(look.ground);
      for (let dent = 0; dent < low; dent += 6) context.fillRect(right - 4, y + dent, 4, 3);
    }
  }

  // PHP's errors have a place, but no width.
  paintErrors(pane: Pane): void {
    const { context, layout } = this, scale = pane.width / (pane.to - pane.from);
    let row = 0, latest = -99;
    for (const box of layout.errors) {
      while (layout.rows[row + 1] <= box) {
        row++;
        latest = -99;
      }
      const across = (layout.x[box] - pane.from) * scale, y = row * pane.rowHeight - pane.top + pane.rowHeight / 2;
      if (across < -5 || across > pane.width + 5 || y < -5 || y > pane.height + 5 || across - latest < 5) continue;
      latest = across;
      context.beginPath();
      for (const [dx, dy] of [[0, -6], [6, 0], [0, 6], [-6, 0]]) context.lineTo(across + dx, y + dy);
      context.closePath();
      context.fillStyle = this.look.error;
      context.fill();
      context.strokeStyle = this.look.ground;
      context.stroke();
    }
    this.colour = '';
  }
}
