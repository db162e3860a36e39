// SPDX-License-Identifier: MIT
import { isDark } from './app';
import { areaColour, areaNames, areaOfFunction } from './areas';
import { h, text } from './dom';
import type { Trace } from './trace';

// What the colours and marks of the flame graph mean.
export function legend(trace: Trace): HTMLElement {
  const calls = new Set(trace.functions.name.map((_, number) => areaOfFunction(number)));
  const items = areaNames.flatMap((name, area) => {
    if (!calls.has(area) && !name.startsWith('(')) return [];
    return h('li', null, h('i', { class: 'dot', style: { background: areaColour(area, isDark()) } }), text(name));
  });
  const marks = [['◥ ↯', 'threw'], ['⋯', 'never ended'], ['◆', 'PHP error']]
    .map(([mark, meaning]) => h('li', null, h('span', { class: 'flame-error', 'aria-hidden': 'true' }, `${mark} `), meaning));
  return h('ul', { class: 'flame-legend', tabindex: 0, 'aria-label': 'Colours and marks' }, items, marks);
}
