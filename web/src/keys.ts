// SPDX-License-Identifier: MIT
import { h } from './dom';

const keys: [string, string][] = [
  ['1 … 9, 0', 'Overview, Flame graph, Tree and so on'],
  ['← →', 'from tab to tab'],
  ['/', 'search'],
  ['Enter, Shift + Enter', 'next and previous hit, in the search; n and N elsewhere'],
  ['Esc', 'close the details; empty the search'],
  ['Alt + ←, Alt + →', 'back and forward'],
  ['↑ ↓, Home, End', 'in tables and in the tree: from row to row'],
  ['Enter', 'show the details of the row, or sort by the column'],
];

const treeKeys: [string, string][] = [
  ['→ ←', 'open and close a row'],
  ['*', 'open all rows of its level'],
  ['U', 'show repeats one by one'],
];

const flameKeys: [string, string][] = [
  ['+ − or W S', 'zoom'],
  ['A D or Shift + arrows', 'move'],
  ['Arrows', 'from box to box'],
  ['Enter', 'zoom to the box'],
  ['Esc', 'all of it'],
];

const terms: [string, string][] = [
  ['own', 'time in a call itself, without what it called'],
  ['total', 'time from its begin to its end, with all that it called'],
  ['memory +', 'by how much more memory was in use at its end than at its begin'],
  ['node', 'one thing that the trace recorded: a call, an include, a header, a part of the output, an error'],
  ['area', 'functions of one namespace or folder, which share a colour'],
];

function list(rows: [string, string][], tag: 'kbd' | 'b'): HTMLElement {
  const row = ([key, what]: [string, string]) =>
    h('div', null, h('dt', null, h(tag, null, key)), h('dd', null, what));
  return h('dl', { class: 'keys' }, rows.map(row));
}

export function keysDialog(): HTMLDialogElement {
  return h(
    'dialog',
    { 'aria-labelledby': 'keys-title', id: 'keys-dialog' },
    h('h2', { id: 'keys-title' }, 'Keys'),
    list(keys, 'kbd'),
    h('h3', null, 'In the tree'),
    list(treeKeys, 'kbd'),
    h('h3', null, 'In the flame graph'),
    list(flameKeys, 'kbd'),
    h('h3', null, 'Words'),
    list(terms, 'b'),
    h('form', { method: 'dialog' }, h('button', { class: 'button' }, 'Close')),
  );
}
