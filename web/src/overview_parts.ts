// SPDX-License-Identifier: MIT
//
// What the cards of the overview are made of.
import type { App } from './app';
import { h, visible, type Child } from './dom';
import { ms, percent } from './format';

export function card(title: Child, className: string, ...children: Child[]): HTMLElement {
  return h('section', { class: `card ${className}`.trim() }, h('h2', null, title), children);
}

// A time with its share as a bar, what took it, and something about it.
export function bar(ns: number, whole: number, what: Child, note: Child = null, colour = ''): HTMLElement {
  const share = Math.min(100, whole > 0 ? (100 * ns) / whole : 0);
  return h(
    'li',
    null,
    h('span', { class: 'figure' }, ms(ns)),
    h('span', { class: 'figure soft part' }, percent(ns, whole)),
    h(
      'span',
      { class: 'bar', 'aria-hidden': true },
      h('i', { style: { width: `${share.toFixed(1)}%`, background: colour } }),
    ),
    h(
      'span',
      { class: 'name' },
      what,
      note
        ? h('small', { class: typeof note === 'string' && note.length < 16 ? 'soft fixed' : 'soft' }, note)
        : null,
    ),
  );
}

export function bars(...rows: Child[]): HTMLElement {
  return h('ol', { class: 'bars' }, rows);
}

export function openLink(app: App, key: string, title: Child, argument = ''): HTMLElement {
  return h('button', { class: 'link', 'data-open': key, onclick: () => app.open(key, argument) }, title);
}

// The first of a list, and where the others are.
export function firsts<Row>(list: Row[], most: number, row: (each: Row) => Child, more: Child): Child[] {
  return [list.slice(0, most).map(row), list.length > most && h('li', { class: 'more' }, more)];
}

export function placeNote(file: string | null, line: number | null): string {
  return file === null ? '' : visible(`at ${file.slice(file.lastIndexOf('/') + 1)}${line ? `:${line}` : ''}`);
}
