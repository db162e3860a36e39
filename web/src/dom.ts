// SPDX-License-Identifier: MIT
//
// Elements, made by functions. Whatever a trace says gets on the page as text only: by `text` or `h`
// with a string, never as markup.

export type Child = Node | string | number | null | undefined | false | Child[];
export type Props = Record<string, unknown>;

// Characters that command rather than show: controls, bidi, line separators, what takes no room.
const commanding =
  /[\u0000-\u001f\u007f-\u009f\u00ad\u061c\u200b\u200e\u200f\u2028-\u202e\u2060-\u206f\ufeff\ufff9-\ufffb]/g;
const short: Record<string, string> = { '\n': '\\n', '\r': '\\r', '\t': '\\t' };

function escaped(character: string): string {
  const code = character.charCodeAt(0);
  const hex = code.toString(16);
  return short[character] ?? (code < 256 ? `\\x${hex.padStart(2, '0')}` : `\\u${hex.padStart(4, '0')}`);
}

// One line: no character commands the page or the reader's eyes.
export function visible(from: string): string {
  return from.replace(commanding, escaped);
}

// The same, but lines and tabs stay what they are.
export function visibleLines(from: string): string {
  return from.replace(/\r\n/g, '\n').replace(commanding, (c) => (c === '\n' || c === '\t' ? c : escaped(c)));
}

function append(to: Node, child: Child): void {
  if (Array.isArray(child)) for (const each of child) append(to, each);
  else if (child instanceof Node) to.appendChild(child);
  else if (child !== null && child !== undefined && child !== false)
    to.appendChild(document.createTextNode(String(child)));
}

function set(element: Element, name: string, value: unknown): void {
  if (value === undefined || value === null || value === false) return;
  if (name.startsWith('on')) element.addEventListener(name.slice(2), value as EventListener);
  else if (name === 'style') Object.assign((element as HTMLElement).style, value);
  else element.setAttribute(name === 'class' ? 'class' : name, value === true ? '' : String(value));
}

// h('button', { class: 'link', onclick: f }, 'text'): attributes, listeners (`on…`), style as an object.
export function h<K extends keyof HTMLElementTagNameMap>(
  tag: K,
  props?: Props | null,
  ...children: Child[]
): HTMLElementTagNameMap[K] {
  const element = document.createElement(tag);
  for (const name in props) set(element, name, props[name]);
  append(element, children);
  return element;
}

// The same for SVG.
export function svg(tag: string, props?: Props | null, ...children: Child[]): SVGElement {
  const element = document.createElementNS('http://www.w3.org/2000/svg', tag);
  for (const name in props) set(element, name, props[name]);
  append(element, children);
  return element;
}

// Text of a trace in one line, kept apart from the direction of what stands around it.
export function text(from: string, className = ''): HTMLElement {
  return h('span', { class: `text ${className}`.trim() }, visible(from));
}

export function replace(element: Element, ...children: Child[]): void {
  element.textContent = '';
  append(element, children);
}
