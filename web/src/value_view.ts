// SPDX-License-Identifier: MIT
//
// One value, whole: indented, with what the tracer cut marked, long ones in part until all is asked for.
import { cutMark } from './brief';
import { h, replace, visible, visibleLines } from './dom';
import { bytes, many } from './format';
import { cutString, stringOf } from './json_text';

const shown = 100_000; // characters of one value, before all of it is asked for
const oneLine = 72;
const markText = 'cut by the tracer';

function cutSign(): HTMLElement {
  return h('span', { class: 'cut' }, markText);
}

// True if the value that begins there is over after a few characters.
function isShort(json: string, at: number): boolean {
  let depth = 0;
  let isString = false;
  for (let i = at; i < json.length && i < at + oneLine; ++i) {
    const c = json[i];
    if (isString) {
      if (c === '\\') ++i;
      else if (c === '"') isString = false;
    } else if (c === '"') isString = true;
    else if (c === '[' || c === '{') ++depth;
    else if ((c === ']' || c === '}') && --depth === 0) return true;
  }
  return false;
}

const token = /"(?:[^"\\]|\\.)*"?|[[\]{},:]|[^[\]{},:"]+/gs;

class Printer {
  private readonly parts: Node[] = [];
  private depth = 0;
  private inline = 0; // depth within a value on one line; 0 none

  constructor(private readonly json: string) {}

  print(): Node[] {
    for (const match of this.json.matchAll(token)) this.put(match[0], match.index);
    return this.parts;
  }

  private add(said: string, className = ''): void {
    this.parts.push(className ? h('span', { class: className }, said) : document.createTextNode(said));
  }

  private line(): void {
    this.add(`\n${'  '.repeat(Math.min(this.depth, 60))}`);
  }

  private open(said: string, at: number): void {
    this.add(said);
    if (this.inline > 0 || isShort(this.json, at)) ++this.inline;
    ++this.depth;
    if (this.inline === 0 && !']}'.includes(this.json[at + 1])) this.line();
  }

  private close(said: string, at: number): void {
    --this.depth;
    if (this.inline > 0) --this.inline;
    else if (!'[{'.includes(this.json[at - 1])) this.line();
    this.add(said);
  }

  private put(said: string, at: number): void {
    if (said === '[' || said === '{') this.open(said, at);
    else if (said === ']' || said === '}') this.close(said, at);
    else if (said === ',') {
      this.add(this.inline > 0 ? ', ' : ',');
      if (this.inline === 0) this.line();
    } else if (said === ':') this.add(': ');
    else if (said[0] === '"') this.string(said, this.json[at + said.length] === ':');
    else this.add(said, said === 'null' || said === 'true' || said === 'false' ? 'o' : 'n');
  }

  private string(said: string, isKey: boolean): void {
    const plain = stringOf(said);
    const isCut = plain.endsWith(cutMark);
    const rest = visible(isCut ? plain.slice(0, -cutMark.length) : plain);
    if (rest || !isCut) this.add(isKey ? rest : `"${rest}"`, isKey ? 'k' : 's');
    if (isCut) this.parts.push(cutSign());
  }
}

function printed(json: string): Node[] {
  if (json[0] !== '"') return new Printer(json).print();
  const plain = stringOf(json);
  const isCut = plain.endsWith(cutMark);
  const said = document.createTextNode(visibleLines(isCut ? plain.slice(0, -cutMark.length) : plain));
  return isCut ? [said, cutSign()] : [said];
}

// A long text stays JSON as far as it goes.
function shortened(json: string): string {
  return json[0] === '"' ? cutString(json, shown) : json.slice(0, shown);
}

export function valueView(json: string): HTMLElement {
  const isText = json[0] === '"';
  const kind = isText ? 'text' : json[0] === '[' || json[0] === '{' ? '' : 'scalar';
  const pre = h('pre', { class: 'value', tabindex: json.length > 200 ? 0 : undefined, 'data-kind': kind });
  if (json.length <= shown) {
    replace(pre, printed(json));
    return pre;
  }
  replace(pre, printed(shortened(json)));
  const all = h(
    'button',
    {
      class: 'button',
      onclick: () => {
        replace(pre, printed(json));
        all.remove();
      },
    },
    `Show all ${bytes(json.length)}`,
  );
  return h('div', null, pre, h('p', { class: 'soft' }, `The first ${many(shown, 'character')}. `, all));
}
