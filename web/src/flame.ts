// SPDX-License-Identifier: MIT
//
// The flame graph: what called what as boxes as wide as what they took, in order of time or merged.
import type { App, Hits, View } from './app';
import { h, replace } from './dom';
import { choice, sentence } from './flame_about';
import { FlameInput, type Orders } from './flame_input';
import { layInOrder, type Layout, type Weight } from './flame_layout';
import { legend } from './flame_legend';
import { layMerged } from './flame_merge';
import { ROW, Stage } from './flame_stage';
import { nextBox, type StepKey } from './flame_steps';
import { bytes, many, ms, percent } from './format';
import { inSlices, pause } from './slices';

type Form = 'order' | 'merged';

const KEYS = 'Arrow keys go from box to box: up to the caller, down to the widest call, left and right to the neighbours. '
  + 'Enter zooms to the box, Escape shows all. + and − or W and S zoom, A and D or Shift and arrows move.';
const EASY = 24; // pixels: a selected box is made at least so wide
const weights: Record<Weight, string> = { time: 'time', memory: 'memory growth', calls: 'calls' };
const amounts: Record<Weight, (amount: number) => string> = { time: ms, memory: bytes, calls: (value) => many(Math.round(value), 'call') };

class Flame implements View, Orders {
  readonly key = 'flame';
  readonly title = 'Flame graph';
  readonly root: HTMLElement;
  private readonly stage: Stage;
  private readonly status = h('span', { class: 'flame-status', id: 'flame-status' });
  private readonly said = h('p', { class: 'sr', id: 'flame-said', 'aria-live': 'polite' });
  private readonly nothing = h('p', { class: 'nothing', hidden: true });
  private readonly toSelection = h('button', {
    class: 'button', id: 'flame-selection', title: 'Zoom to the selection (Enter)', disabled: true, onclick: () => this.zoomTo(this.stage.selected),
  }, 'Selection');
  private readonly forms = new Map<Form, HTMLElement>();
  private readonly widths: HTMLSelectElement;
  private form: Form = 'order';
  private weight: Weight = 'time';
  private shown = ''; // form and weight of what is laid out, or being so
  private isVisible = false;
  private isOwnStep = false;
  private seen = -1; // the node that was brought into sight last
  private isFresh = false; // shown, but not told yet what to show
  private chosen = ''; // which of the selected box's nodes the details show, if it has several
  private asked = ''; // by the address

  constructor(private readonly app: App) {
    this.stage = new Stage(app, () => this.tellRange());
    const input = new FlameInput(this.stage, this);
    this.widths = h('select', { id: 'flame-weight', onchange: () => this.ask(this.form, this.widths.value as Weight) },
      Object.entries(weights).map(([value, title]) => h('option', { value }, title)));
    const button = (id: string, label: string, title: string, act: () => void): HTMLElement =>
      h('button', { class: 'button', id, title, 'aria-label': title, onclick: act }, label);
    const tools = h('div', { class: 'tools' },
      h('div', { class: 'segments', role: 'group', 'aria-label': 'Order' }, this.formButton('order', 'In order of time'), this.formButton('merged', 'Merged')),
      h('label', { class: 'flame-width' }, h('span', null, 'Width:'), this.widths),
      h('div', { class: 'flame-zoom' },
        button('flame-in', '+', 'Zoom in (+ or W)', () => input.zoom(2)), button('flame-out', '−', 'Zoom out (− or S)', () => input.zoom(0.5)),
        this.toSelection, button('flame-all', 'All', 'Show all (Escape)', () => this.reset())),
      h('span', { class: 'flame-hint' }, 'Wheel zooms, drag moves, double click zooms to a box'), this.status);
    let key = legend(app.trace);
    matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => {
      const next = legend(app.trace);
      key.replaceWith(next);
      key = next;
    });
    this.root = h('section', { class: 'flame' }, tools, this.nothing, this.stage.root, key,
      h('p', { class: 'sr', id: 'flame-keys' }, KEYS), this.said);
  }

  show(): void {
    this.isVisible = this.isFresh = true;
    this.stage.measure();
    if (this.seen !== this.app.selected) this.selected(this.app.selected);
    void this.lay();
  }

  focus(): void {
    this.stage.canvas.focus({ preventScroll: true });
  }

  hide(): void {
    this.isVisible = false;
    this.stage.hover(-1, 0, 0);
  }

  // "merged", "order-calls": what the address says after a=.
  // Coming back to the view without one finds it as it was left.
  argument(argument: string): void {
    const isKept = argument === this.asked || (this.isFresh && !argument);
    this.isFresh = false;
    this.asked = argument;
    if (isKept) return;
    const [form, weight] = argument.split('-');
    this.form = form === 'merged' ? 'merged' : 'order';
    this.weight = weight in weights ? (weight as Weight) : 'time';
    for (const [each, element] of this.forms) element.setAttribute('aria-pressed', String(each === this.form));
    this.widths.value = this.weight;
    if (this.isVisible) void this.lay();
  }

  selected(index: number): void {
    const { layout } = this.stage;
    this.stage.selected = layout && index >= 0 ? layout.boxOf[index] : -1;
    this.chosen = layout ? choice(this.app.trace, layout, this.stage.selected) : '';
    this.status.classList.toggle('flame-choice', this.chosen !== '');
    this.toSelection.disabled = this.stage.selected < 0;
    this.said.textContent = layout && index >= 0 ? sentence(this.app.trace, layout, this.stage.selected) : '';
    if (this.isVisible) this.stage.measure(); // the details may have just taken room
    if (this.isVisible && !this.isOwnStep) this.reveal(this.stage.selected, 'fit');
    if (this.isVisible && layout) this.seen = index;
    this.stage.schedule();
  }

  found(hits: Hits | null): void {
    this.stage.mark(hits?.bits ?? null);
  }

  choose(box: number): void {
    this.isOwnStep = true;
    this.app.select(box < 0 ? -1 : this.stage.layout!.node[box]);
    this.isOwnStep = false;
  }

  step(key: StepKey): void {
    const { layout, selected, camera } = this.stage;
    if (!layout) return;
    const box = nextBox(layout, selected, selected < 0 ? 0 : this.stage.rowOf(selected), key, 1 / camera.scale);
    if (box < 0) return;
    this.choose(box);
    this.reveal(box);
  }

  zoomTo(box: number): void {
    const { layout, camera } = this.stage;
    if (!layout || box < 0 || !layout.width[box]) return;
    const top = Math.min(camera.top, this.stage.rowOf(box) * ROW);
    camera.go({ from: layout.x[box], to: layout.x[box] + layout.width[box], top });
    this.reveal(box, 'as it is');
  }

  reset(): boolean {
    const { camera } = this.stage;
    if (camera.from <= 0 && camera.to >= camera.whole && camera.top <= 0) return false;
    camera.go({ from: 0, to: camera.whole, top: 0 });
    return true;
  }

  private formButton(form: Form, title: string): HTMLElement {
    const button = h('button', { 'aria-pressed': String(form === this.form), 'data-form': form, onclick: () => this.ask(form, this.weight) }, title);
    this.forms.set(form, button);
    return button;
  }

  private ask(form: Form, weight: Weight): void {
    this.app.open('flame', form === 'order' && weight === 'time' ? '' : `${form}${weight === 'time' ? '' : `-${weight}`}`);
  }

  private async lay(): Promise<void> {
    const { form, weight } = this, wanted = `${form}-${weight}`;
    if (wanted === this.shown) return;
    this.shown = wanted;
    this.status.textContent = 'Arranging …';
    this.stage.canvas.setAttribute('aria-busy', 'true');
    const lay = form === 'merged' ? layMerged : layInOrder;
    const layout = await inSlices<Layout>(lay(this.app.trace, weight), () => this.shown !== wanted);
    await pause();
    if (!layout || this.shown !== wanted) return;
    this.stage.show(layout);
    this.stage.canvas.removeAttribute('aria-busy');
    this.stage.canvas.dataset.form = form;
    this.stage.canvas.dataset.weight = weight;
    this.nothing.hidden = layout.whole > 0;
    this.stage.root.classList.toggle('flame-empty', layout.whole === 0);
    replace(this.nothing, `Nothing of this trace has a width by ${weights[weight]}. Choose another one above.`);
    this.selected(this.app.selected);
  }

  // Moves as little as needed for a box to be seen; 'fit': as a whole.
  private reveal(box: number, zoom: '' | 'fit' | 'as it is' = ''): void {
    const { layout, camera } = this.stage;
    if (!layout || box < 0 || box >= layout.count) return;
    const y = this.stage.rowOf(box) * ROW;
    let seen = box;
    while (layout.width[seen] === 0 && layout.parent[seen] >= 0) seen = layout.parent[seen];
    const left = layout.x[seen], width = layout.width[seen];
    let { from, to, top } = camera.goal;
    if (zoom === 'fit' && width > to - from) [from, to] = [0, camera.whole];
    if (zoom !== 'as it is' && width * (camera.width / (to - from)) < EASY) {
      const span = (width / EASY) * camera.width * 0.25;
      [from, to] = [left + width / 2 - span / 2, left + width / 2 + span / 2];
    } else if (left >= to - (to - from) * 0.02 || left + width <= from + (to - from) * 0.02) {
      const shift = left + Math.min(width, to - from) / 2 - (from + to) / 2;
      [from, to] = [from + shift, to + shift];
    }
    if (y < top + ROW) top = y - ROW;
    else if (y + 2 * ROW > top + camera.height) top = y + 2 * ROW - camera.height;
    if (from !== camera.goal.from || to !== camera.goal.to || top !== camera.goal.top) camera.go({ from, to, top });
  }

  private tellRange(): void {
    const { camera, layout } = this.stage, span = camera.to - camera.from;
    if (!layout) return;
    const whole = amounts[this.weight](layout.whole);
    this.status.textContent = this.chosen || (span >= camera.whole ? whole : `${amounts[this.weight](span)} of ${whole} (${percent(span, layout.whole)})`);
    this.status.title = this.status.textContent;
  }
}

export function flameView(app: App): View {
  return new Flame(app);
}
