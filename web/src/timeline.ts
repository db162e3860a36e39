// SPDX-License-Identifier: MIT
//
// Memory over time, with output, headers, exceptions and errors below it on the same axis.
import type { App } from './app';
import { h, replace, svg, visible, type Child } from './dom';
import { bytes, ms, roughly } from './format';
import { Kind, Outcome, nameOf, outcomeOf, type Trace } from './trace';

const left = 78;
const right = 14;
const top = 8;
const plot = 120; // height of the memory
const lane = 20;
const step = 3; // px of a point of the line

interface Lane {
  title: string;
  className: string;
  nodes: number[];
}

function lanesOf(trace: Trace): Lane[] {
  const { summary } = trace;
  const output: Lane = { title: 'Output', className: 'tick-output', nodes: [] };
  const headers: Lane = { title: 'Headers', className: 'tick-header', nodes: [] };
  const errors: Lane = { title: 'Errors', className: 'tick-error', nodes: [] };
  const thrown: Lane = { title: 'Exceptions', className: 'tick-error', nodes: [] };
  for (let i = 0; i < trace.count; ++i) {
    const kind = trace.kind[i];
    if (kind === Kind.write) output.nodes.push(i);
    else if (kind === Kind.header || kind === Kind.send_headers) headers.nodes.push(i);
    else if (kind === Kind.error) errors.nodes.push(i);
    else if (
      summary.exceptions.length &&
      outcomeOf(trace, i) === Outcome.threw &&
      (i === trace.count - 1 || outcomeOf(trace, i + 1) !== Outcome.threw)
    )
      thrown.nodes.push(i);
  }
  return [output, headers, thrown, errors].filter((each) => each.nodes.length > 0);
}

// The most memory at each point of the line; where nothing begins, what was before.
function heightsOf(trace: Trace, points: number): Float64Array {
  const heights = new Float64Array(points).fill(-1);
  const whole = trace.whole || 1;
  for (let i = 0; i < trace.count; ++i) {
    const point = Math.min(points - 1, Math.floor((trace.start[i] / whole) * points));
    if (trace.memory[i] > heights[point]) heights[point] = trace.memory[i];
  }
  for (let p = 0, before = 0; p < points; ++p) before = heights[p] < 0 ? (heights[p] = before) : heights[p];
  return heights;
}

// A step of the axis such that some ticks fit.
function niceStep(whole: number, ticks: number): number {
  const raw = whole / Math.max(1, ticks);
  const ten = 10 ** Math.floor(Math.log10(raw));
  return [1, 2, 5, 10].map((each) => each * ten).find((each) => each >= raw) ?? raw;
}

// The last node that had begun by then, as deep as it lies.
function nodeAt(trace: Trace, time: number): number {
  let low = 0;
  let high = trace.count - 1;
  while (low < high) {
    const middle = (low + high + 1) >> 1;
    if (trace.start[middle] <= time) low = middle;
    else high = middle - 1;
  }
  return low;
}

const hint = 'Point for time and memory; click to select what ran.';

class Timeline {
  readonly root = h('div', { class: 'timeline', 'data-testid': 'timeline' });
  private readonly lanes: Lane[];
  private readonly whole: number;
  private readonly peak: number;
  private width = 0;
  private readonly chart = h('div');
  private readonly said = h('p', { class: 'soft hint' }, hint);

  constructor(private readonly app: App) {
    const { trace } = app;
    this.lanes = lanesOf(trace);
    this.whole = trace.whole || 1;
    this.peak = trace.summary.request.memory_peak || 1;
    this.draw(900); // for print, before it has a place
    replace(this.root, this.chart, this.said);
    new ResizeObserver(() => {
      const width = Math.floor(this.root.clientWidth);
      if (width < 80 || width === this.width) return;
      this.draw(width);
    }).observe(this.root);
  }

  private get inner(): number {
    return this.width - left - right;
  }

  private get bottom(): number {
    return top + plot + this.lanes.length * lane + 4;
  }

  private x(time: number): number {
    return left + (Math.min(time, this.whole) / this.whole) * this.inner;
  }

  private y(value: number): number {
    return top + plot * (1 - value / this.peak);
  }

  private draw(width: number): void {
    this.width = width;
    const lanes = this.lanes.map((each) => `${each.nodes.length} times ${each.title.toLowerCase()}`);
    const label = `Memory over ${roughly(this.whole)}, at most ${bytes(this.peak)}; below it: ${lanes.join(', ') || 'nothing'}.`;
    const height = this.bottom + 22;
    const size = { width, height, viewBox: `0 0 ${width} ${height}` };
    const onclick = ({ offsetX, offsetY }: MouseEvent) => this.app.select(this.nodeOf(offsetX, offsetY));
    const onmousemove = ({ offsetX, offsetY }: MouseEvent) => this.tell(this.nodeOf(offsetX, offsetY), offsetX);
    const onmouseleave = () => this.tell(-1, 0);
    const parts = [this.times(), this.scale(), this.memory(), this.marks()];
    const listeners = { onclick, onmousemove, onmouseleave };
    replace(this.chart, svg('svg', { ...size, role: 'img', 'aria-label': label, ...listeners }, parts));
  }

  private times(): Child[] {
    const ticks: Child[] = [];
    const tick = niceStep(this.whole, this.inner / 90);
    for (let time = 0; time <= this.whole; time += tick) {
      const x = this.x(time);
      const anchor = time === 0 ? 'start' : 'middle';
      ticks.push(svg('line', { class: 'grid', x1: x, x2: x, y1: top, y2: this.bottom }));
      ticks.push(label(x, this.bottom + 16, anchor, time === 0 ? '0' : roughly(time)));
    }
    return ticks;
  }

  private scale(): Child[] {
    return [this.peak, this.peak / 2].map((value) => {
      const y = this.y(value);
      return [
        svg('line', { class: 'grid', x1: left, x2: this.width - right, y1: y, y2: y }),
        label(left - 8, y + 4, 'end', bytes(value)),
      ];
    });
  }

  private memory(): Child {
    const points = Math.max(2, Math.floor(this.inner / step));
    let path = `M${left},${top + plot}`;
    heightsOf(this.app.trace, points).forEach((value, point) => {
      path += `L${(left + (point / (points - 1)) * this.inner).toFixed(1)},${this.y(value).toFixed(1)}`;
    });
    return svg('path', { class: 'memory', d: `${path}L${this.width - right},${top + plot}Z` });
  }

  private marks(): Child[] {
    return this.lanes.map((each, at) => {
      const y = top + plot + at * lane + 5;
      const places = new Set(each.nodes.map((index) => Math.round(this.x(this.app.trace.start[index]))));
      const mark = (x: number) =>
        svg('rect', { class: each.className, x: x - 1, y, width: 2.5, height: lane - 6 });
      return [label(left - 8, y + 11, 'end', each.title), [...places].map(mark)];
    });
  }

  // The nearest mark of the lane, else what ran at that time.
  private nodeOf(x: number, y: number): number {
    const { trace } = this.app;
    const time = this.timeOf(x);
    if (time < 0) return -1;
    const distance = (index: number) => Math.abs(trace.start[index] - time);
    const marks = this.lanes[Math.floor((y - top - plot - 2) / lane)]?.nodes;
    return marks?.reduce((a, b) => (distance(b) < distance(a) ? b : a)) ?? nodeAt(trace, time);
  }

  private timeOf(x: number): number {
    return ((x - left) / this.inner) * this.whole;
  }

  private tell(index: number, x: number): void {
    const { trace } = this.app;
    const memory = bytes(trace.memory[index] ?? NaN);
    const facts = [ms(Math.min(this.whole, this.timeOf(x))), memory, index < 0 ? '' : nameOf(trace, index)];
    this.said.textContent = index < 0 ? hint : visible(facts.filter(Boolean).join(' · '));
  }
}

function label(x: number, y: number, anchor: string, said: string): SVGElement {
  return svg('text', { class: 'label', x, y, 'text-anchor': anchor }, said);
}

export function timeline(app: App): HTMLElement {
  return new Timeline(app).root;
}
