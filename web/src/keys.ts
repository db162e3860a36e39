// SPDX-License-Identifier: MIT
import { h } from './dom';

const keys: [string, string][] = [
  ['1 … 9, 0', 'Overview, Flame graph, Tree and so on'],
  ['← →', 'from tab to tab'],
  ['/', 'search'],
  ['Enter, Shift + Enter', 'next and previous hit, in the search; n and N elsewhere'],
  ['Esc', 'close the details; empty the search'],
  ['Alt + ←, Alt + →', 'back and forward'],
  ['↑ ↓ ← →, Home, End', 'in the tree and in tables: move, unfold and fold'],
  ['Enter', 'show the details of the row, or sort by the column'],
  ['+ − 0, ← →, ↑ ↓', 'in the flame graph: zoom, all of it, move'],
];

export function keysDialog(): HTMLDialogElement {
  const rows = keys.map(([key, what]) =>
    h('div', null, h('dt', null, h('kbd', null, key)), h('dd', null, what)),
  );
  return h(
    'dialog',
    { 'aria-labelledby': 'keys-title', id: 'keys-dialog' },
    h('h2', { id: 'keys-title' }, 'Keys'),
    h('dl', { class: 'keys' }, rows),
    h('form', { method: 'dialog' }, h('button', { class: 'button' }, 'Close')),
  );
}
