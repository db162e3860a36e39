// SPDX-License-Identifier: MIT
//
// The profile of functions; of the chosen one, who called it, what it called, and its slowest calls.
import type { App, View } from './app';
import { areaNames, areaOfFunction } from './areas';
import { calleesOf, callersOf, slowestCalls } from './callers';
import { h, replace, text, visible } from './dom';
import { many, ms, percent } from './format';
import { groupTable, profileColumns, slowestTable } from './function_tables';
import { Table } from './table';

const slowestShown = 200;

class FunctionsView implements View {
  readonly key = 'functions';
  readonly title = 'Functions';
  readonly root: HTMLElement;
  private readonly filter = h('input', {
    type: 'search',
    id: 'functions-filter',
    placeholder: 'Filter functions …',
    'aria-label': 'Filter functions',
    autocomplete: 'off',
    spellcheck: 'false',
    oninput: () => this.fill(),
  });
  private readonly said = h('output', { class: 'soft', for: 'functions-filter' });
  private readonly split = h('div', { class: 'split', id: 'functions-one', hidden: true });
  private readonly table: Table<number>;
  private readonly called: number[];
  private chosen = -1;
  private kind = 'all';
  private readonly area: HTMLSelectElement;

  constructor(private readonly app: App) {
    const { trace } = app;
    this.called = trace.functions.name.map((_, i) => i).filter((i) => trace.functions.calls[i] > 0);
    this.table = new Table<number>({
      label: 'Functions',
      columns: profileColumns(trace),
      sort: 'own',
      least: '600px',
      empty: 'No function fits.',
      choose: (row) => app.open('functions', String(row)),
      isChosen: (row) => row === this.chosen,
    });
    this.area = this.areaSelect();
    this.root = h(
      'section',
      null,
      h(
        'div',
        { class: 'tools' },
        this.filter,
        this.area,
        h('span', { class: 'segments', role: 'group', 'aria-label': 'Which functions' }, this.kindButtons()),
        this.said,
      ),
      this.table.root,
      this.split,
    );
    this.fill();
  }

  show(): void {
    this.table.refresh();
  }

  hide(): void {}

  focus(): void {
    this.table.focus();
  }

  argument(said: string): void {
    const area = /^area (\d+)$/.exec(said);
    if (area) {
      this.area.value = area[1];
      this.fill();
    }
    const number =
      /^\d+$/.test(said) && Number(said) < this.app.trace.functions.name.length ? Number(said) : -1;
    if (number === this.chosen) return;
    this.chosen = number;
    this.table.refresh();
    this.split.hidden = number < 0;
    if (number >= 0) this.showOne(number);
    this.table.reveal((row) => row === number);
  }

  selected(): void {
    if (this.chosen >= 0)
      for (const row of this.split.querySelectorAll<HTMLElement>('[data-slowest] tr'))
        row.classList.toggle(
          'chosen',
          row.querySelector('a')?.dataset.node === String(this.app.trace.id[this.app.selected]),
        );
  }

  private kindButtons(): HTMLElement[] {
    const kinds: [string, string][] = [
      ['all', 'All'],
      ['user', 'Of scripts'],
      ['builtin', 'PHP’s own'],
    ];
    const buttons = kinds.map(([key, title]) =>
      h(
        'button',
        {
          'data-kind': key,
          'aria-pressed': String(key === 'all'),
          onclick: () => {
            this.kind = key;
            for (const button of buttons)
              button.setAttribute('aria-pressed', String(button.dataset.kind === key));
            this.fill();
          },
        },
        title,
      ),
    );
    return buttons;
  }

  private areaSelect(): HTMLSelectElement {
    const has = (area: number) => this.called.some((row) => areaOfFunction(row) === area);
    return h(
      'select',
      { id: 'functions-area', 'aria-label': 'Area', onchange: () => this.fill() },
      h('option', { value: -1 }, 'All areas'),
      areaNames.map((name, area) => has(area) && h('option', { value: area }, visible(name))),
    );
  }

  private fill(): void {
    const { functions: f } = this.app.trace;
    const wanted = this.filter.value.toLowerCase();
    const area = Number(this.area.value);
    const rows = this.called.filter(
      (row) =>
        (area < 0 || areaOfFunction(row) === area) &&
        (this.kind === 'all' || (f.builtin[row] === 1) === (this.kind === 'builtin')) &&
        f.name[row].toLowerCase().includes(wanted),
    );
    let own = 0;
    for (const row of rows) own += f.own_ns[row];
    this.said.textContent = `${many(rows.length, 'function')}, ${ms(own)} own, ${percent(own, this.app.trace.whole)}`;
    this.table.set(rows);
  }

  private showOne(number: number): void {
    const { app } = this;
    const { trace } = app;
    const { functions: f } = trace;
    const total = f.total_ns[number];
    replace(
      this.split,
      h(
        'h2',
        null,
        text(trace.functions.name[number]),
        h(
          'span',
          { class: 'soft' },
          `${many(f.calls[number], 'call')}, ${ms(total)} total, ${ms(f.own_ns[number])} own`,
        ),
        h('button', { class: 'close', 'aria-label': 'Close', onclick: () => app.open('functions') }, '×'),
      ),
      h(
        'div',
        { class: 'columns' },
        groupTable(app, 'Called by', callersOf(trace, number), total, 'Nothing called it.'),
        groupTable(app, 'Called directly', calleesOf(trace, number), total, 'It called nothing.'),
        slowestTable(app, slowestCalls(trace, number, slowestShown), f.calls[number]),
      ),
    );
  }
}

export function functionsView(app: App): View {
  return new FunctionsView(app);
}
