// SPDX-License-Identifier: MIT
//
// What the client got: status, headers, and the body as text, each part of which knows who wrote it.
import type { App, Hits, View } from './app';
import { h, replace, text, visible, visibleLines } from './dom';
import { cutMark } from './brief';
import { bytes, many } from './format';
import { cutString, member, stringOf } from './json_text';
import { idLink } from './links';
import { nodesOf } from './node_table';
import { Kind, nameOf } from './trace';

const shown = 100_000; // characters, before all of it is asked for
const slice = 50; // ms of work before the page gets its turn

interface Header {
  id: number;
  name: string;
  value: string;
  cut: boolean;
}

function headersOf(app: App): HTMLElement {
  const { response } = app.trace;
  const status =
    response.status_line ?? (response.status ? `HTTP status ${response.status}` : 'No HTTP status');
  const rows = response.headers.map((header: Header) =>
    h(
      'li',
      null,
      idLink(
        app,
        header.id,
        h('span', { class: 'text' }, `${visible(header.name)}: ${visible(header.value)}`),
      ),
      header.cut && h('span', { class: 'cut' }, 'cut by the tracer'),
    ),
  );
  return h(
    'section',
    null,
    h('h2', { class: 'caption', style: { paddingLeft: '0' } }, 'Status and headers, as they were sent'),
    h(
      'ul',
      { class: 'mono', id: 'output-headers' },
      h(
        'li',
        null,
        response.status_set_by !== null
          ? idLink(app, response.status_set_by, text(String(status)))
          : text(String(status)),
      ),
      rows,
    ),
  );
}

// So much of a write's text as is shown, and a character more where there is more. JSON has at most six for one.
function bodyOf(line: string, most: number): string {
  const body = member(line, 'body') ?? '""';
  return stringOf(most < Infinity ? cutString(body, 6 * (most + 2)) : body);
}

class OutputView implements View {
  readonly key = 'output';
  readonly title = 'Output';
  readonly root: HTMLElement;
  private readonly writes: number[];
  private readonly body = h('pre', {
    class: 'bodytext',
    id: 'output-body',
    'aria-label': 'Body, in parts as they were written',
  });
  private readonly said = h('p', { class: 'soft', role: 'status' });
  private parts: HTMLElement[] = [];
  private isFilled = false;
  private isChoosing = false;

  constructor(private readonly app: App) {
    this.writes = nodesOf(app.trace, Kind.write);
    const head = headersOf(app);
    const hasBody = this.writes.length > 0;
    this.root = h(
      'section',
      null,
      h(
        'div',
        { class: 'page' },
        head,
        h(
          'section',
          null,
          h('h2', { class: 'caption', style: { paddingLeft: '0' } }, 'Body'),
          hasBody
            ? [
                h(
                  'p',
                  { class: 'soft', style: { marginBottom: '8px' } },
                  `${bytes(app.trace.summary.request.bytes_out)} in ${many(this.writes.length, 'write')}. Choose a part of it to see what wrote it.`,
                ),
                this.body,
                this.said,
              ]
            : h('p', { class: 'soft' }, 'This request wrote no output.'),
        ),
      ),
    );
    this.body.addEventListener('click', (event) => this.choose(event.target as HTMLElement));
    this.body.addEventListener('keydown', (event) => this.keyed(event));
  }

  show(): void {
    if (this.isFilled) return;
    this.isFilled = true;
    void this.fill(shown);
  }

  hide(): void {}

  selected(index: number): void {
    for (const part of this.parts) part.classList.toggle('chosen', Number(part.dataset.index) === index);
    // What was chosen here is in sight, and stays where it is.
    if (!this.isChoosing) this.body.querySelector('.chosen')?.scrollIntoView({ block: 'nearest' });
  }

  found(hits: Hits | null): void {
    for (const part of this.parts) part.classList.toggle('hit', hits?.bits[Number(part.dataset.index)] === 1);
  }

  private async fill(most: number): Promise<void> {
    const { app } = this;
    this.parts = [];
    let length = 0;
    let began = performance.now();
    let at = 0;
    for (; at < this.writes.length && length < most; ++at) {
      const index = this.writes[at];
      const line = await app.values.line(index).catch(() => null);
      const said = line === null ? '' : bodyOf(line, most - length);
      const part = this.part(index, said.slice(0, Math.max(0, most - length)));
      length += said.length;
      if (line === null)
        part.append(
          h(
            'span',
            { class: 'cut' },
            app.values.isLeftOut(index) ? 'left out of this page' : 'not in the trace',
          ),
        );
      this.parts.push(part);
      if (performance.now() - began < slice) continue;
      this.said.textContent = `Reading write ${at + 1} of ${this.writes.length} …`;
      await new Promise((done) => setTimeout(done));
      began = performance.now();
    }
    replace(this.body, this.parts);
    if (this.parts.length) this.parts[0].tabIndex = 0;
    this.selected(app.selected);
    this.found(app.hits);
    const all = h(
      'button',
      { class: 'button', id: 'output-all', onclick: () => void this.fill(Infinity) },
      'Show all',
    );
    replace(
      this.said,
      at < this.writes.length || length > most ? [`The first ${many(most, 'character')}. `, all] : null,
    );
  }

  private part(index: number, said: string): HTMLElement {
    const { trace } = this.app;
    const isCut = said.endsWith(cutMark);
    const who = `#${trace.id[index]} by ${visible(nameOf(trace, trace.parent[index]))}`;
    return h(
      'span',
      { role: 'button', tabindex: -1, title: who, 'data-index': index, 'data-node': trace.id[index] },
      visibleLines(isCut ? said.slice(0, -cutMark.length) : said),
      isCut && h('span', { class: 'cut' }, 'cut by the tracer'),
    );
  }

  private choose(element: HTMLElement): void {
    const part = element.closest<HTMLElement>('[data-index]');
    if (!part || getSelection()?.isCollapsed === false) return;
    this.isChoosing = true;
    this.app.select(Number(part.dataset.index));
    this.isChoosing = false;
  }

  private keyed(event: KeyboardEvent): void {
    const at = this.parts.indexOf(event.target as HTMLElement);
    if (at < 0) return;
    const to: Record<string, number> = {
      ArrowRight: at + 1,
      ArrowDown: at + 1,
      ArrowLeft: at - 1,
      ArrowUp: at - 1,
      Home: 0,
      End: this.parts.length - 1,
    };
    if (event.key === 'Enter' || event.key === ' ') this.choose(this.parts[at]);
    else if (event.key in to && this.parts[to[event.key]]) {
      this.parts[at].tabIndex = -1;
      this.parts[to[event.key]].tabIndex = 0;
      this.parts[to[event.key]].focus();
    } else return;
    event.preventDefault();
  }
}

export function outputView(app: App): View {
  return new OutputView(app);
}
