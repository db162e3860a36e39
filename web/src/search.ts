// SPDX-License-Identifier: MIT
//
// The search over names, and over values: these are unpacked block by block, a slice at a time, so that
// the page answers meanwhile.
import type { App, Hits } from './app';
import { type Block, charsOf } from './call_values';
import { h, replace } from './dom';
import { count, many } from './format';
import { Kind, shortFunction, type Trace } from './trace';

const slice = 30; // ms of work before the page gets its turn
const typing = 180; // ms to wait for the next key

interface Finder extends App {
  find(hits: Hits | null): void;
}

const pause = () => new Promise<void>((done) => setTimeout(done));

// What is looked for, in the bytes of a value's JSON: as typed, as JSON escapes it, capitals as they are or small.
function needles(wanted: string): string[] {
  const json = JSON.stringify(wanted).slice(1, -1);
  return [...new Set([wanted, json, json.replace(/\//g, '\\/')])].map((each) => each.toLowerCase());
}

// The form's own keys, which are no values of the trace.
const keys =
  /"(this|args|returned|thrown|class|handle|resource|body|size|number|level|message|operation|header|code|status|name|sequence)":/g;

// Whether what is looked for cannot be in what is made of an entry's bytes, if it is not in them: it is
// neither part of a number, of a class's name or of a word that they do not have, nor of what JSON has
// between values.
function areInBytes(wanted: string, classes: string[]): boolean {
  return (
    /^[^:\0-\x1f"\\,{}[\]*\x7f-\uffff][^\0-\x1f"\\,{}[\]*\x7f-\uffff]*$/.test(wanted) &&
    !/^[\d.e+-]*$/.test(wanted) &&
    !'null true false cut'.includes(wanted) &&
    !classes.some((name) => name.toLowerCase().includes(wanted))
  );
}

// Letters that become ASCII when they are made small, as bytes.
const odd = /\xc4\xb0|\xe2\u201e\xaa/;

// The entries that have to be read to know whether it is in them.
function* entriesToRead(block: Block, sought: string[] | null): Generator<number> {
  const { starts } = block;
  const chars = sought && charsOf(block);
  if (chars === null || odd.test(chars)) {
    for (let entry = 0; entry + 1 < starts.length; ++entry) yield entry;
    return;
  }
  const small = chars.toLowerCase();
  const next = sought!.map((each) => small.indexOf(each));
  for (let entry = 0; entry + 1 < starts.length; ++entry) {
    const end = starts[entry + 1];
    if (!next.some((at) => at >= 0 && at < end)) continue;
    yield entry;
    next.forEach((at, i) => {
      if (at >= 0 && at < end) next[i] = small.indexOf(sought![i], end);
    });
  }
}

function hitsOf(bits: Uint8Array): Hits {
  let many = 0;
  for (const bit of bits) many += bit;
  const list = new Int32Array(many);
  for (let i = 0, at = 0; i < bits.length; ++i) if (bits[i]) list[at++] = i;
  return { bits, list, at: -1 };
}

function has(said: string, sought: string[]): boolean {
  return sought.some((each) => said.includes(each));
}

function findNames(trace: Trace, wanted: string): Hits {
  const fits = (name: string) => name.toLowerCase().includes(wanted);
  const functions = trace.functions.name.map(fits);
  const labels = trace.labels.map(fits);
  const bits = new Uint8Array(trace.count);
  for (let i = 0; i < trace.count; ++i) {
    const name = trace.name[i];
    if (name >= 0 && (trace.kind[i] === Kind.call ? functions[name] : labels[name])) bits[i] = 1;
  }
  return hitsOf(bits);
}

// The place of the first hit whose name, or the method's alone, is what was looked for; -1 none.
function exactHit(trace: Trace, hits: Hits, typed: string): number {
  const wanted = typed.toLowerCase();
  const fits = trace.functions.name.map((_, number) => {
    const name = shortFunction(trace, number).toLowerCase();
    return name === wanted || name.endsWith(`::${wanted}`);
  });
  return hits.list.findIndex((i) => trace.kind[i] === Kind.call && fits[trace.name[i]]);
}

const hitsSaid = (number: number) => many(number, 'hit');

export class Search {
  readonly root: HTMLElement;
  private readonly input = h('input', {
    type: 'search',
    id: 'search',
    placeholder: 'Search names …',
    'aria-label': 'Search',
    autocomplete: 'off',
    spellcheck: 'false',
  });
  private readonly where = h(
    'select',
    { id: 'search-in', 'aria-label': 'Search in' },
    h('option', { value: 'names' }, 'Names'),
    h('option', { value: 'values' }, 'Values'),
  );
  private readonly said = h('output', { id: 'search-hits', 'aria-live': 'polite', for: 'search' });
  private readonly buttons: HTMLButtonElement[];
  private hits: Hits | null = null;
  private exact = -1; // place in the hits of the first that is named just so
  private run = 0; // number of the search that counts
  private timer = 0;

  constructor(private readonly app: Finder) {
    const step = (by: number, sign: string, name: string) =>
      h(
        'button',
        {
          class: 'step',
          type: 'button',
          id: `search-${name.toLowerCase()}`,
          title: `${name} hit`,
          'aria-label': `${name} hit`,
          disabled: true,
          onclick: () => this.step(by),
        },
        sign,
      );
    this.buttons = [step(-1, '↑', 'Previous'), step(1, '↓', 'Next')];
    this.input.addEventListener('input', () => this.later());
    this.where.addEventListener('change', () => {
      this.input.placeholder = `Search ${this.where.value} …`;
      void this.start();
    });
    this.root = h(
      'form',
      { class: 'search', role: 'search', onsubmit: (event: Event) => event.preventDefault() },
      this.input,
      this.where,
      this.buttons,
      this.said,
    );
    this.root.addEventListener('keydown', (event) => this.key(event));
  }

  // Another node than the hit was selected: it is none of the hits that is looked at now.
  selected(index: number): void {
    const { hits } = this;
    if (!hits || index < 0 || hits.at < 0 || hits.list[hits.at] === index) return;
    hits.at = -1;
    this.tell(hitsSaid(hits.list.length));
  }

  focus(): void {
    this.input.focus();
    this.input.select();
  }

  // Goes so many hits on, round and round, beginning behind the selected node.
  step(by: number): void {
    const { hits, app } = this;
    if (!hits || hits.list.length === 0) return;
    const many = hits.list.length;
    if (hits.at < 0 && app.selected >= 0) hits.at = this.before(app.selected, by);
    if (hits.at < 0 && by > 0 && app.selected < 0 && this.exact > 0) hits.at = this.exact - 1;
    hits.at = hits.at < 0 ? (by > 0 ? 0 : many - 1) : (hits.at + by + many) % many;
    this.tell(`${count(hits.at + 1)} of ${count(many)}`);
    const { view } = document.querySelector<HTMLElement>('.view:not([hidden])')?.dataset ?? {};
    app.select(hits.list[hits.at], view === 'flame' || view === 'tree' ? {} : { open: 'tree' });
  }

  private before(index: number, by: number): number {
    const { list } = this.hits!;
    let at = 0;
    while (at < list.length && list[at] < index) ++at;
    return by > 0 ? at - 1 : at;
  }

  private key(event: KeyboardEvent): void {
    if (event.target !== this.input) return;
    if (event.key === 'Enter') {
      event.preventDefault();
      if (this.timer) void this.start().then(() => this.step(1));
      else this.step(event.shiftKey ? -1 : 1);
    } else if (event.key === 'Escape') {
      this.input.value = '';
      void this.start();
      this.input.blur();
    }
  }

  private later(): void {
    clearTimeout(this.timer);
    this.timer = window.setTimeout(() => void this.start(), typing);
  }

  private tell(said: string): void {
    this.said.textContent = said;
  }

  private async start(): Promise<void> {
    clearTimeout(this.timer);
    this.timer = 0;
    const run = ++this.run;
    const wanted = this.input.value.toLowerCase();
    if (wanted === '') return this.finish(null);
    if (this.where.value === 'names') return this.finish(findNames(this.app.trace, wanted));
    try {
      const hits = await this.findValues(wanted, run);
      if (run === this.run && hits) this.finish(hits);
    } catch (error) {
      if (run === this.run) this.tell(String(error));
    }
  }

  private finish(hits: Hits | null): void {
    this.hits = hits;
    const many = hits?.list.length ?? 0;
    for (const button of this.buttons) button.disabled = many === 0;
    this.exact = hits && this.where.value === 'names' ? exactHit(this.app.trace, hits, this.input.value) : -1;
    if (!hits) this.tell('');
    else if (many > 0) this.tell(hitsSaid(many));
    else if (this.where.value === 'values') this.tell('no hit');
    else replace(this.said, 'no hit in names; ', this.valuesButton());
    this.app.find(hits);
  }

  private valuesButton(): HTMLElement {
    const onclick = () => {
      this.where.value = 'values';
      this.where.dispatchEvent(new Event('change'));
      this.input.focus();
    };
    return h('button', { type: 'button', class: 'link', id: 'search-values', onclick }, 'try values');
  }

  // Null if another search was begun meanwhile.
  private async findValues(wanted: string, run: number): Promise<Hits | null> {
    const { values, trace } = this.app;
    const order = values.order();
    const bits = new Uint8Array(trace.count);
    const sought = needles(wanted);
    const tell = areInBytes(sought[0], trace.classes);
    let began = performance.now();
    for (let number = 0; number < values.blockCount; ++number) {
      const entries = await values.entries(number);
      if (run !== this.run) return null;
      const { first, block } = entries ?? { first: 0, block: null };
      const places = block && entriesToRead(block, tell ? sought : null);
      for (const entry of places ?? []) {
        const said = values.lineAt(block!, entry).toLowerCase();
        if (has(said, sought) && has(said.replace(keys, ''), sought)) bits[order[first + entry]] = 1;
        if (performance.now() - began < slice) continue;
        this.tell(`searching ${Math.floor((100 * number) / values.blockCount)} %`);
        await pause();
        if (run !== this.run) return null;
        began = performance.now();
      }
    }
    return hitsOf(bits);
  }
}
