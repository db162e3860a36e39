// SPDX-License-Identifier: MIT
//
// The selected node: what it is, its times and memory, whole values, the way down to it.
import type { App } from './app';
import { h, replace, text, visible, type Child } from './dom';
import { bytes, count, many, ms, percent, signedBytes } from './format';
import { members } from './json_text';
import { functionLink, nodeLink, placeText, short, tailed } from './links';
import { Flag, Kind, Outcome, kindNames, nameOf, outcomeOf, type Trace } from './trace';
import { valueView } from './value_view';

const wayShown = 40;
const calledShown = 12;
const titles: Record<string, string> = {
  this: 'On object',
  args: 'Arguments',
  returned: 'Returned',
  thrown: 'Threw',
  body: 'Text',
  size: 'Size',
  header: 'Header',
  operation: 'Operation',
  message: 'Message',
};

type Fact = [string, Child];

function outcomeText(trace: Trace, index: number): Child {
  const outcome = outcomeOf(trace, index);
  if (outcome === Outcome.threw) return h('span', { class: 'bad' }, 'threw an exception');
  return outcome === Outcome.open ? h('span', { class: 'bad' }, 'never ended') : null;
}

function timeNotes(flags: number): string {
  const notes = [
    flags & Flag.untimed ? 'The trace has no time for its begin: it is that of the node before.' : '',
    flags & Flag.endUntimed ? 'The trace has no time for its end.' : '',
    flags & Flag.moved ? 'The clock ran backwards here: times were moved to fit.' : '',
  ];
  return notes.filter(Boolean).join(' ');
}

function factsOf(trace: Trace, index: number): HTMLElement {
  const whole = trace.whole;
  const isSpan = outcomeOf(trace, index) !== Outcome.none;
  const share = (ns: number) => h('span', { class: 'soft' }, ` ${percent(ns, whole)}`);
  const number = trace.kind[index] === Kind.call ? trace.name[index] : -1;
  const below = trace.last[index] - index;
  const { functions, flags } = trace;
  const facts: Fact[] = [
    ['Node', `#${trace.id[index]}`],
    ['Outcome', outcomeText(trace, index)],
    ['Total', isSpan && [ms(trace.total[index]), share(trace.total[index])]],
    ['Own', isSpan && [ms(trace.own[index]), share(trace.own[index])]],
    ['Begins at', ms(trace.start[index])],
    ['Memory', flags[index] & Flag.hasMemory ? bytes(trace.memory[index]) : null],
    [
      'Memory +',
      flags[index] & Flag.hasDelta
        ? [
            signedBytes(trace.growth[index]),
            h('span', { class: 'soft' }, `, own ${signedBytes(trace.ownMemory[index])}`),
          ]
        : null,
    ],
    ['At', placeText(trace, trace.file[index], trace.line[index], 999)],
    [
      'Defined at',
      number >= 0
        ? functions.builtin[number]
          ? 'PHP’s own function'
          : placeText(trace, functions.file[number], functions.line[number], 999)
        : null,
    ],
    ['Inside', below ? many(below, 'node') : null],
    ['Note', timeNotes(flags[index])],
  ];
  return h(
    'dl',
    { class: 'facts' },
    facts.filter(([, what]) => what).map(([title, what]) => [h('dt', null, title), h('dd', null, what)]),
  );
}

// What kind of node it is, where its name does not say so.
function titleOf(trace: Trace, index: number): Child {
  const kind = kindNames[trace.kind[index]].replace('_', ' ');
  const name = nameOf(trace, index);
  return [!name.startsWith(kind) && h('span', { class: 'soft' }, `${kind} `), kind === 'call' ? short(name, Infinity) : text(name)];
}

function calledAt(trace: Trace, index: number): Child {
  const path = trace.files[trace.file[index]];
  if (path === undefined) return null;
  const element = tailed(path.slice(path.lastIndexOf('/') + 1), `:${trace.line[index]}`, 'soft');
  element.title = visible(`${path}:${trace.line[index]}`);
  return h('small', null, element);
}

function wayDown(app: App, index: number): HTMLElement {
  const { trace } = app;
  const way: number[] = [];
  let above = index;
  for (; above >= 0 && way.length < wayShown; above = trace.parent[above]) way.push(above);
  const left = above >= 0 ? trace.depth[above] + 1 : 0;
  const rows = way
    .reverse()
    .map((node) =>
      h(
        'li',
        null,
        h('span', { class: 'figure' }, ms(trace.total[node])),
        node === index
          ? h('b', null, short(nameOf(trace, node), 60))
          : nodeLink(app, node, short(nameOf(trace, node), 60)),
        calledAt(trace, node),
      ),
    );
  return h(
    'section',
    null,
    h('h3', null, 'Called through'),
    left ? h('p', { class: 'soft' }, `… ${many(left, 'level')} above`) : null,
    h('ol', { class: 'way' }, rows),
  );
}

function called(app: App, index: number): HTMLElement | null {
  const { trace } = app;
  const children: number[] = [];
  for (let i = index + 1; i <= trace.last[index]; i = trace.last[i] + 1) children.push(i);
  if (children.length === 0) return null;
  const shown = children.sort((a, b) => trace.total[b] - trace.total[a] || a - b).slice(0, calledShown);
  const rows = shown.map((node) =>
    h('li', null, h('span', { class: 'figure' }, ms(trace.total[node])), nodeLink(app, node, short(nameOf(trace, node), 60)), calledAt(trace, node)),
  );
  const more = children.length > shown.length ? `, the slowest of ${count(children.length)}` : '';
  return h('section', null, h('h3', null, `Directly inside${more}`), h('ol', { class: 'way' }, rows));
}

// A text among values has its quotes, which are no part of it.
function quoted(json: string): HTMLElement {
  const view = valueView(json);
  if (json[0] === '"') (view.matches('pre') ? view : view.querySelector('pre'))?.classList.add('quoted');
  return view;
}

function valueParts(line: string): Child {
  return members(line).map(({ key, value }) => {
    const title = titles[key ?? ''] ?? key ?? '';
    if (key !== 'args')
      return [
        h('h3', null, title),
        key === 'size'
          ? h('p', null, bytes(Number(value)))
          : key === 'returned'
            ? quoted(value)
            : valueView(value),
      ];
    const args = members(value);
    if (args.length === 0) return h('h3', null, 'No arguments');
    return [h('h3', null, `${title} (${args.length})`), args.map((arg) => quoted(arg.value))];
  });
}

export class Details {
  readonly root = h('aside', {
    class: 'details',
    id: 'details',
    'aria-label': 'Details of the selected node',
    tabindex: -1,
    hidden: true,
  });
  private shown = -1;

  constructor(private readonly app: App) {}

  show(index: number): void {
    this.shown = index;
    this.root.hidden = index < 0;
    if (index < 0) return;
    const { trace } = this.app;
    const values = h('section', { class: 'values', hidden: true });
    replace(
      this.root,
      h(
        'header',
        null,
        h(
          'h2',
          null,
          titleOf(trace, index),
        ),
        h(
          'button',
          {
            class: 'close',
            'aria-label': 'Close the details',
            title: 'Close (Esc)',
            onclick: () => this.app.select(-1),
          },
          '×',
        ),
      ),
      h('section', null, factsOf(trace, index), this.links(index)),
      values,
      wayDown(this.app, index),
      called(this.app, index),
    );
    this.root.scrollTop = 0;
    void this.fill(values, index);
  }

  private links(index: number): HTMLElement {
    const { app } = this;
    const { trace } = app;
    const number = trace.kind[index] === Kind.call ? trace.name[index] : -1;
    const to = (key: string, title: string) =>
      h('button', { class: 'button', 'data-open': key, onclick: () => app.open(key) }, title);
    return h(
      'p',
      { class: 'links', style: { marginTop: '8px' } },
      to('flame', 'In the flame graph'),
      to('tree', 'In the tree'),
      number >= 0 ? functionLink(trace, number, 'All its calls', 'button') : null,
      trace.kind[index] === Kind.write ? to('output', 'In the output') : null,
    );
  }

  private async fill(to: HTMLElement, index: number): Promise<void> {
    const { trace, values } = this.app;
    if (!(trace.flags[index] & Flag.hasValues)) return;
    to.hidden = false;
    if (values.isLeftOut(index)) {
      replace(
        to,
        h('p', null, 'Its values are not in this page, which would be too large with all of them. '),
        h(
          'p',
          null,
          'Get them by ',
          h('code', { class: 'mono' }, `cttool show ${trace.meta.trace} ${trace.id[index]}`),
          '.',
        ),
      );
      return;
    }
    try {
      const line = await values.line(index);
      if (this.shown === index && line !== null) replace(to, valueParts(line));
    } catch (error) {
      if (this.shown === index) replace(to, h('p', { class: 'bad' }, String(error)));
    }
    if (!to.hasChildNodes()) to.hidden = true;
  }
}
