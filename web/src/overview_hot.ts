// SPDX-License-Identifier: MIT
//
// Where own time went: areas, functions and files.
import { isDark, type App } from './app';
import { areaColour, areaNames } from './areas';
import { h, visible, type Child } from './dom';
import { many, ms } from './format';
import { functionLink, short } from './links';
import { bar, bars, card, openLink } from './overview_parts';
import { shortFunction, type Trace } from './trace';

// To what is in an area: its functions, or the view that has what is in none.
function areaLink(app: App, name: string): Child {
  const views: Record<string, string> = {
    '(output)': 'output',
    '(includes: compiling, top-level code)': 'includes',
    '(PHP outside of scripts)': 'tree',
  };
  return name in views
    ? openLink(app, views[name], name)
    : openLink(app, 'functions', short(name), `area ${areaNames.indexOf(name)}`);
}

export function areasCard(app: App): HTMLElement {
  const { trace } = app;
  const whole = trace.whole;
  const rows = (trace.summary.areas.rows as { name: string; own_ns: number; calls: number }[]).filter(
    (row) => row.own_ns > 0,
  );
  const colour = (name: string) => areaColour(areaNames.indexOf(name), isDark());
  const stack = h(
    'div',
    { class: 'stack', 'aria-hidden': true },
    rows.map((row) =>
      h('i', {
        title: visible(`${row.name}: ${ms(row.own_ns)}`),
        style: { width: `${((100 * row.own_ns) / whole).toFixed(2)}%`, background: colour(row.name) },
      }),
    ),
  );
  return card(
    'Where own time went',
    '',
    stack,
    bars(
      rows.map((row) =>
        bar(
          row.own_ns,
          whole,
          areaLink(app, row.name),
          row.calls ? many(row.calls, 'call') : null,
          colour(row.name),
        ),
      ),
    ),
  );
}

function numbersByName(trace: Trace): Map<string, number> {
  const numbers = new Map<string, number>();
  trace.functions.name.forEach((name, number) => {
    if (!numbers.has(name) || trace.functions.own_ns[number] > trace.functions.own_ns[numbers.get(name)!])
      numbers.set(name, number);
  });
  return numbers;
}

export function hotCard(app: App): HTMLElement {
  const { trace } = app;
  const numbers = numbersByName(trace);
  const { functions, includes } = trace.summary;
  const whole = trace.whole;
  interface Hot {
    own_ns: number;
    name?: string;
    path?: string;
    calls?: number;
    times?: number;
  }
  const rows = ([...functions.slice(0, 10), ...includes.slice(0, 10)] as Hot[])
    .sort((a, b) => b.own_ns - a.own_ns)
    .slice(0, 10);
  return card(
    openLink(app, 'functions', 'Hottest functions and files, by own time'),
    '',
    bars(
      rows.map((row) => {
        if (row.path !== undefined)
          return bar(
            row.own_ns,
            whole,
            openLink(app, 'includes', short(`include ${row.path}`)),
            row.times! > 1 ? `${row.times} times` : null,
          );
        const number = numbers.get(row.name!);
        return bar(
          row.own_ns,
          whole,
          number === undefined
            ? short(row.name!)
            : functionLink(
                trace,
                number,
                short(row.name!.endsWith('{closure}') ? shortFunction(trace, number) : row.name!),
              ),
          many(row.calls!, 'call'),
        );
      }),
    ),
  );
}
