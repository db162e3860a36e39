// SPDX-License-Identifier: MIT
//
// What a box is, in words: for the tip at the pointer, and for readers who hear the page.
import type { App } from './app';
import { areaNames, areaOf } from './areas';
import { briefCall } from './brief';
import { h, visible } from './dom';
import type { Layout } from './flame_layout';
import { bytes, many, ms, percent, shortPath, signedBytes } from './format';
import { Flag, Kind, nameOf, Outcome, type Trace } from './trace';

const COLUMNS = 240; // of arguments in the tip
const DEAREST = { time: 'Slowest', memory: 'Most grown', calls: 'Busiest' }; // which node of a box stands for it

interface Sums {
  times: number;
  total: number;
  own: number;
  growth: number;
  threw: number;
  open: number;
}

// Of all nodes of a box.
function sumsOf(trace: Trace, layout: Layout, box: number): Sums {
  const sums = { times: 0, total: 0, own: 0, growth: NaN, threw: 0, open: 0 };
  for (let i = layout.first ? layout.first[box] : layout.node[box]; i >= 0; i = layout.next ? layout.next[i] : -1) {
    sums.times++;
    sums.total += trace.total[i];
    sums.own += trace.own[i];
    if (!Number.isNaN(trace.growth[i])) sums.growth = (sums.growth || 0) + trace.growth[i];
    const outcome = trace.flags[i] & Flag.outcome;
    if (outcome === Outcome.threw) sums.threw++;
    if (outcome === Outcome.open) sums.open++;
  }
  return sums;
}

function figures(trace: Trace, layout: Layout, box: number, sums: Sums): string {
  const { whole } = trace;
  const parts = [`total ${ms(sums.total)} (${percent(sums.total, whole)})`, `own ${ms(sums.own)} (${percent(sums.own, whole)})`];
  if (!Number.isNaN(sums.growth)) parts.push(`memory ${signedBytes(sums.growth)}`);
  if (layout.weight === 'memory') parts.push(`grown by ${bytes(layout.width[box])} inside`);
  if (layout.weight === 'calls') parts.push(`${many(layout.width[box], 'call')} with those inside`);
  return parts.join(', ');
}

function warnings(trace: Trace, sums: Sums, node: number): string {
  const parts: string[] = [];
  const of = (count: number): string => (sums.times > 1 ? ` × ${count}` : '');
  if (sums.threw) parts.push(`↯ ended by an exception${of(sums.threw)}`);
  if (sums.open) parts.push(`⋯ never ended${of(sums.open)}`);
  if (sums.times === 1 && trace.flags[node] & (Flag.untimed | Flag.endUntimed)) parts.push('its time is not known exactly');
  return parts.join(', ');
}

function title(trace: Trace, node: number, times: number): string {
  return visible(nameOf(trace, node)) + (times > 1 ? ` × ${times}` : '');
}

export function sentence(trace: Trace, layout: Layout, box: number): string {
  const node = layout.node[box], sums = sumsOf(trace, layout, box);
  const parts = [title(trace, node, sums.times), choice(trace, layout, box), figures(trace, layout, box, sums), warnings(trace, sums, node),
    `depth ${trace.depth[node]}`];
  return parts.filter(Boolean).join('; ');
}

// Of a box of several nodes: which of them a click chooses; '' of others.
export function choice(trace: Trace, layout: Layout, box: number): string {
  if (box < 0 || !layout.times || layout.times[box] < 2) return '';
  const { times, total } = sumsOf(trace, layout, box), node = layout.node[box];
  const all = many(times, trace.kind[node] === Kind.call ? 'call' : 'node');
  return `${DEAREST[layout.weight]} of ${all}, ${ms(total)} in all`;
}

function place(trace: Trace, node: number): string {
  const file = trace.file[node];
  return file < 0 ? '' : ` · at ${visible(shortPath(trace.files[file], 50))}:${trace.line[node]}`;
}

// The tip: one element, filled anew for each box.
export class Tip {
  readonly root = h('div', { class: 'flame-tip', hidden: true, 'aria-hidden': 'true' });
  private box = -1;
  private layout: Layout | null = null;

  constructor(private readonly app: App) {}

  hide(): void {
    this.root.hidden = true;
    this.box = -1;
  }

  // At a place in the element around it, whose size is given too.
  show(layout: Layout, box: number, x: number, y: number, width: number, height: number): void {
    if (box !== this.box || layout !== this.layout) {
      this.box = box;
      this.layout = layout;
      this.fill(layout, box);
    }
    this.root.hidden = false;
    const { offsetWidth, offsetHeight } = this.root;
    const isBelow = y + 18 + offsetHeight <= height || y < offsetHeight + 10;
    this.root.style.left = `${Math.max(0, Math.min(x + 12, width - offsetWidth))}px`;
    this.root.style.top = `${isBelow ? y + 18 : y - offsetHeight - 10}px`;
  }

  private fill(layout: Layout, box: number): void {
    const { trace, values } = this.app, node = layout.node[box], sums = sumsOf(trace, layout, box);
    const said = h('div', { class: 'text flame-call' });
    const line = values.peek(node);
    const warning = warnings(trace, sums, node), area = areaNames[areaOf(trace, node)];
    this.root.textContent = '';
    this.root.append(h('b', { class: 'text' }, title(trace, node, sums.times)), h('div', null, figures(trace, layout, box, sums)));
    if (warning) this.root.append(h('div', { class: 'flame-warning' }, warning));
    this.root.append(said, h('div', { class: 'flame-quiet' },
      `${sums.times > 1 ? `${DEAREST[layout.weight]} ` : ''}#${trace.id[node]}`, area ? ` · ${visible(area)}` : '', place(trace, node)));
    if (line === undefined) void values.line(node).then((late) => this.box === box && this.tell(said, node, late), () => undefined);
    else this.tell(said, node, line);
  }

  private tell(to: HTMLElement, node: number, line: string | null): void {
    const { kind } = this.app.trace;
    if (line !== null && (kind[node] === Kind.call || kind[node] === Kind.write)) to.textContent = briefCall(this.app.trace, node, line, COLUMNS);
    else if (this.app.values.isLeftOut(node)) to.textContent = 'Its values were left out of this page.';
  }
}
