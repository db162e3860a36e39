// SPDX-License-Identifier: MIT
//
// What stands above everything: which request this was, how it went, the search.
import type { App } from './app';
import { h, text } from './dom';
import { bytes, ms } from './format';

export function statusClass(status: number): string {
  if (status >= 500) return 'bad';
  return status >= 400 ? 'warn' : 'good';
}

export function heading(app: App, search: HTMLElement): HTMLElement {
  const { summary, meta } = app.trace;
  const { request } = summary;
  const facts = [
    request.status
      ? h(
          'span',
          { class: `chip ${statusClass(request.status)}`, title: 'HTTP status' },
          String(request.status),
        )
      : null,
    h('span', { class: 'chip', title: 'Duration' }, ms(request.total_ns)),
    h('span', { class: 'chip', title: 'Memory at most' }, bytes(request.memory_peak)),
    meta.damaged ? h('span', { class: 'chip bad' }, 'damaged') : null,
    request.open ? h('span', { class: 'chip warn' }, 'unfinished') : null,
  ];
  return h(
    'header',
    { class: 'top' },
    h(
      'div',
      { class: 'what' },
      h('h1', null, text(meta.title || meta.trace)),
      h('div', { class: 'chips' }, facts),
    ),
    search,
  );
}
