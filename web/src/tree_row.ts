// SPDX-License-Identifier: MIT
//
// One row of the tree on the page: its figures, what it is, its marks.
import type { App } from './app';
import { briefCall } from './brief';
import { h, visible, type Child } from './dom';
import { count, many, ms, percent, signedBytes } from './format';
import { Flag, Kind, nameOf, Outcome } from './trace';
import { State, type RowList } from './tree_list';

const COLUMNS = 160; // of arguments
const KEPT = 4000; // texts of calls

// ms() without its unit, which the column's head says.
const figure = (ns: number): string => ms(ns).slice(0, -3);

// Where room is scarce the namespace or the folder goes first.
function nameParts(name: string): HTMLElement {
  const space = /^(?:include .*\/|[^\s(:]*\\)(?=.)/.exec(name)?.[0] ?? '';
  return h('span', { class: 'tree-name' }, space ? h('span', { class: 'text' }, space) : null, h('b', { class: 'text' }, name.slice(space.length)));
}

function mark(sign: string, label: string): HTMLElement {
  return h('span', { class: 'tree-mark', role: 'img', 'aria-label': label, title: label }, sign);
}

export class RowMaker {
  hitsBefore: Int32Array | null = null; // by node
  private readonly texts = new Map<number, string>();
  private readonly missing = new Set<number>(); // nodes whose values are not unpacked yet
  private readonly failed = new Set<number>(); // blocks that cannot be read

  constructor(private readonly app: App, private readonly next: Int32Array) {}

  make(list: RowList, row: number, indent: number): HTMLElement {
    const isRest = list.count[row] === 0;
    const element = h('div', { role: 'row', id: `tree-row-${row}`, class: 'tree-row', 'aria-rowindex': row + 2, 'aria-level': list.level[row] + 1 });
    element.dataset.row = String(row);
    if (isRest) element.classList.add('tree-rest');
    else element.dataset.id = String(this.app.trace.id[list.count[row] > 1 ? list.slowest[row] : list.first[row]]);
    if (list.isParent(row)) element.setAttribute('aria-expanded', String(list.state[row] !== State.closed));
    if (list.count[row] > 1) element.dataset.times = String(list.count[row]);
    element.append(...this.figures(list, row, isRest), this.what(list, row, indent, element));
    return element;
  }

  private figures(list: RowList, row: number, isRest: boolean): HTMLElement[] {
    const { whole } = this.app.trace, total = list.total[row];
    const cell = (kind: string, ...children: Child[]): HTMLElement => h('div', { role: 'gridcell', class: `tree-${kind}` }, children);
    const bar = h('i', { class: 'tree-bar', style: { width: `${whole ? Math.min(100, (total / whole) * 100) : 0}%` } });
    return [
      cell('id', isRest ? '' : String(this.app.trace.id[list.first[row]])),
      cell('total', total > 0 && !isRest ? bar : null, h('span', { title: percent(total, whole) }, figure(total))),
      cell('own', figure(list.own[row])), cell('memory', Number.isNaN(list.growth[row]) ? '' : signedBytes(list.growth[row])),
    ];
  }

  private what(list: RowList, row: number, indent: number, element: HTMLElement): HTMLElement {
    const isParent = list.isParent(row), isOpen = list.state[row] !== State.closed;
    const space = h('span', { class: 'tree-indent', style: { width: `${list.level[row] * indent}px`, backgroundSize: indent > 4 ? `${indent}px` : '0' } });
    const caret = h('span', { class: 'tree-caret', 'aria-hidden': 'true', 'data-act': isParent ? 'toggle' : '' }, isParent ? (isOpen ? '▾' : '▸') : '');
    return h('div', { role: 'gridcell', class: 'tree-what' }, space, caret, h('span', { class: 'tree-line' },
      list.count[row] === 0 ? this.rest(list, row) : list.count[row] > 1 ? this.fold(list, row) : this.node(list.first[row], element),
      this.inside(list, row), this.hits(list, row, element)));
  }

  private rest(list: RowList, row: number): Child {
    return h('span', { class: 'tree-more', 'data-act': 'toggle', title: 'Show all in order (Enter)' }, `… ${many(list.nodes[row], 'more node')}`);
  }

  private fold(list: RowList, row: number): Child {
    const { trace } = this.app, slowest = list.slowest[row], isEach = list.state[row] === State.each;
    const outcomes = [0, 0, 0, 0];
    for (let left = list.count[row], node = list.first[row]; left > 0; left--, node = this.next[node]) outcomes[trace.flags[node] & Flag.outcome]++;
    return [
      outcomes[Outcome.threw] ? mark('↯', `${count(outcomes[Outcome.threw])} ended by an exception`) : null,
      nameParts(visible(nameOf(trace, list.first[row]))),
      h('span', { class: 'tree-times', 'data-act': 'each', title: isEach ? 'Together again (U)' : 'One by one (U)' }, `× ${count(list.count[row])}`),
      h('span', { class: 'tree-note' }, `slowest #${trace.id[slowest]}: ${ms(trace.total[slowest])}`),
      outcomes[Outcome.open] ? h('span', { class: 'tree-open' }, `⋯ ${count(outcomes[Outcome.open])} never ended`) : null,
    ];
  }

  private node(node: number, element: HTMLElement): Child {
    const { trace } = this.app, name = visible(nameOf(trace, node)), said = this.text(node);
    const outcome = trace.flags[node] & Flag.outcome, isError = trace.kind[node] === Kind.error;
    if (outcome === Outcome.threw) element.dataset.outcome = 'threw';
    if (outcome === Outcome.open) element.dataset.outcome = 'open';
    return [
      outcome === Outcome.threw ? mark('↯', 'ended by an exception') : null, isError ? mark('◆', 'PHP error') : null,
      nameParts(name), h('span', { class: 'text tree-said' }, said.startsWith(name) ? said.slice(name.length) : ''),
      outcome === Outcome.open ? h('span', { class: 'tree-open' }, '⋯ never ended') : null,
      trace.flags[node] & Flag.untimed ? h('span', { class: 'tree-note' }, 'time not known') : null,
    ];
  }

  // Its arguments and result, as far as they are unpacked; else the row is made again later.
  private text(node: number): string {
    const known = this.texts.get(node);
    if (known !== undefined) return known;
    const { trace, values } = this.app, line = values.peek(node);
    if (line === undefined) {
      this.missing.add(node);
      return visible(nameOf(trace, node)) + (trace.kind[node] === Kind.call ? '(…)' : '');
    }
    if (this.texts.size >= KEPT) this.texts.clear();
    const said = line === null ? visible(nameOf(trace, node)) : briefCall(trace, node, line, COLUMNS);
    this.texts.set(node, said);
    return said;
  }

  // Gets the values that rows were made without; true if those rows can be made again.
  async fetch(): Promise<boolean> {
    const blocks = new Map([...this.missing].map((node) => [this.app.values.blockOf(node), node]));
    this.missing.clear();
    let isNew = false;
    for (const [block, node] of blocks) {
      if (this.failed.has(block)) continue;
      await this.app.values.line(node).then(() => (isNew = true), () => this.failed.add(block));
    }
    return isNew;
  }

  private inside(list: RowList, row: number): Child {
    const inside = list.inside(row);
    return list.count[row] > 0 && inside > 0 && list.state[row] === State.closed ? h('span', { class: 'tree-note tree-inside' }, `… ${count(inside)} inside`) : null;
  }

  // Which of its nodes a search found, and how many under it that do not show.
  private hits(list: RowList, row: number, element: HTMLElement): Child {
    if (!this.hitsBefore) return null;
    const [own, all] = list.count[row] > 0 ? this.hitsOf(list, row) : [0, this.hitsOfRest(list, row)];
    if (own > 0) element.classList.add('hit');
    if (all === own && list.count[row] === 1) return null;
    const hidden = list.state[row] === State.closed ? all : list.count[row] > 1 ? own : 0;
    return hidden > 0 ? h('span', { class: 'tree-hits' }, many(hidden, 'hit') + (hidden === own ? '' : ' inside')) : null;
  }

  // Among its nodes, and with all under them.
  private hitsOf(list: RowList, row: number): [number, number] {
    const before = this.hitsBefore!, { last } = this.app.trace;
    let own = 0, all = 0, node = list.first[row];
    for (let left = list.count[row]; left > 0; left--) {
      own += before[node + 1] - before[node];
      all += before[last[node] + 1] - before[node];
      node = this.next[node];
    }
    return [own, all];
  }

  private hitsOfRest(list: RowList, rest: number): number {
    const parent = list.parentOf(rest);
    let hits = this.hitsBefore![this.app.trace.count];
    if (parent >= 0) {
      const [own, all] = this.hitsOf(list, parent);
      hits = all - own;
    }
    for (let row = parent + 1; row < rest; row = list.endOf(row)) hits -= this.hitsOf(list, row)[1];
    return hits;
  }
}
