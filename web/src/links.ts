// SPDX-License-Identifier: MIT
//
// Links to nodes and functions, and the cells of tables that are made of them.
import type { App } from './app';
import { h, text, visible, type Child } from './dom';
import { ms, percent, shortName, shortPath } from './format';
import { hashOf } from './router';
import type { TableColumn } from './table';
import { indexOf, nameOf, shortFunction, type Trace } from './trace';
import { briefCall } from './values';

// A click selects the node, in the view that is open or in the one that is named; opened in another
// tab, the link shows it in the tree.
export function nodeLink(app: App, index: number, child: Child = null, open?: string): HTMLElement {
  const said = child ?? text(nameOf(app.trace, index));
  if (index < 0) return h('span', null, said);
  return h(
    'a',
    {
      href: hashOf({ view: open ?? 'tree', node: app.trace.id[index], argument: '' }),
      'data-node': app.trace.id[index],
      onclick: (event: MouseEvent) => {
        if (event.ctrlKey || event.metaKey || event.shiftKey) return;
        event.preventDefault();
        app.select(index, { open });
      },
    },
    said,
  );
}

export function idLink(app: App, id: number, child: Child = null, open?: string): HTMLElement {
  return nodeLink(app, indexOf(app.trace, id), child ?? `#${id}`, open);
}

export function functionLink(trace: Trace, number: number, child: Child = null, className = ''): HTMLElement {
  const said = child ?? tailedName(shortFunction(trace, number));
  return h(
    'a',
    {
      class: className,
      href: hashOf({ view: 'functions', node: -1, argument: String(number) }),
      'data-function': number,
    },
    said,
  );
}

// A text of which the end stays in sight where room is short.
export function tailed(head: string, end: string, className = ''): HTMLElement {
  return h(
    'span',
    { class: `text tail ${className}`.trim(), title: visible(head + end) },
    head && h('span', null, visible(head)),
    h('span', null, visible(end)),
  );
}

// "…/inc/" and "Item.php:66"; of an area "…/share/" and "inc/...".
export function tailedPath(path: string, line = 0, className = ''): HTMLElement {
  const at = path.replace(/\/\.\.\..*$/, '').lastIndexOf('/') + 1;
  return tailed(path.slice(0, at), path.slice(at) + (line ? `:${line}` : ''), className);
}

// "…\Lexer\ParallelRegex" and "::split".
function tailedName(name: string): HTMLElement {
  const at = Math.max(name.lastIndexOf('::'), name.lastIndexOf('\\'));
  return tailed(name.slice(0, Math.max(at, 0)), name.slice(Math.max(at, 0)));
}

export function pathText(path: string, line: number, length = 44): HTMLElement | null {
  if (path === '') return null;
  const element = tailedPath(shortPath(path, length), line, 'soft');
  element.title = visible(`${path}:${line}`);
  return element;
}

export function placeText(trace: Trace, file: number, line: number, length = 44): HTMLElement | null {
  return pathText(trace.files[file] ?? '', line, length);
}

// A name of the trace, the end of it if it is long.
export function short(name: string, length = 44): HTMLElement {
  const shown = shortName(name, length);
  const element = /^[^ ]*[/]/.test(name) || name.startsWith('include ') ? tailedPath(shown) : tailedName(shown);
  element.title = visible(name);
  return element;
}

// A time with its share of the whole as a bar behind it.
// The bar is full at `most`.
export function timeCell(ns: number, whole: number, most = whole): Child {
  const share = most > 0 ? Math.min(1, ns / most) : 0;
  return h(
    'span',
    { class: 'share', title: percent(ns, whole) },
    h('i', { style: { width: `${(share * 100).toFixed(1)}%` } }),
    h('b', null, ms(ns).slice(0, -3)),
  );
}

export function timeColumn<Row>(
  key: string,
  title: string,
  of: (row: Row) => number,
  whole: number,
  hint?: string,
  most = whole,
): TableColumn<Row> {
  const cell = (row: Row) => timeCell(of(row), whole, most);
  return { key, title, hint, width: '104px', figure: true, of, cell };
}

// A call with its values, which may come later; bare: without its name.
export function callCell(app: App, index: number, columns = 90, isBare = false): HTMLElement {
  const { trace, values } = app;
  const cell = h('span', { class: 'text' });
  const write = (line: string | null) => {
    const name = visible(nameOf(trace, index));
    const said =
      line === null ? name + (values.isLeftOut(index) ? '(…)' : '') : briefCall(trace, index, line, columns);
    cell.title = said;
    cell.textContent = isBare ? said.slice(name.length) || `#${trace.id[index]}` : said;
  };
  const now = values.peek(index);
  if (now !== undefined) write(now);
  else {
    write(null);
    values.line(index).then(write, () => undefined);
  }
  return cell;
}
