// SPDX-License-Identifier: MIT
//
// The canvas of the flame graph with what lies over it: frames around the selected box and the one
// at the pointer, the tip. Draws at most once a frame of the screen.
import { isDark, type App } from './app';
import { areaColour, areaOf } from './areas';
import { h } from './dom';
import { Tip } from './flame_about';
import { Camera } from './flame_camera';
import { toneOf, type Tone } from './flame_colours';
import type { Layout } from './flame_layout';
import { FlameMap } from './flame_map';
import { Painter, type Look, type Pane } from './flame_paint';
import { paintRuler, paintShares, RULER } from './flame_ruler';
import { Labels } from './flame_text';

export const ROW = 19; // pixels

const FONT = '11.5px ui-monospace, "Cascadia Mono", "SF Mono", Menlo, Consolas, "DejaVu Sans Mono", monospace';
const SLACK = 3; // pixels beside a narrow box that still mean it

export class Stage implements Look {
  readonly canvas = h('canvas', {
    class: 'flame-canvas', tabindex: 0, role: 'application', 'aria-roledescription': 'flame graph',
    'aria-label': 'Flame graph', 'aria-describedby': 'flame-keys flame-said',
  });
  readonly tip: Tip;
  readonly camera = new Camera(() => this.schedule());
  readonly map: FlameMap;
  readonly root: HTMLElement;
  painter: Painter | null = null;
  selected = -1; // boxes
  hovered = -1;
  error = ''; // colours
  ground = '';
  private hitsBefore: Int32Array | null = null;
  private tones: (Tone | undefined)[] = [];
  private frame = 0;
  private isMapStale = true;
  private readonly context = this.canvas.getContext('2d')!;
  private readonly mixer = h('canvas').getContext('2d')!; // for colours: the other one keeps its own
  private readonly labels: Labels;
  private readonly hoverFrame = h('div', { class: 'flame-box flame-hovered', hidden: true });
  private readonly selectedFrame = h('div', { class: 'flame-box flame-selected', hidden: true });
  private readonly thumb = h('div', { class: 'flame-thumb', hidden: true });
  private readonly probe = h('i', { class: 'flame-error' });
  private readonly area: HTMLElement;

  constructor(private readonly app: App, private readonly drawn: () => void) {
    this.tip = new Tip(app);
    this.labels = new Labels(app.trace, this.context);
    this.map = new FlameMap(this.camera, this);
    this.area = h('div', { class: 'flame-area' }, this.canvas,
      h('div', { class: 'flame-frames' }, this.selectedFrame, this.hoverFrame), this.thumb, this.probe);
    this.root = h('div', { class: 'flame-stage' }, this.map.root, this.area, this.tip.root);
    new ResizeObserver(() => this.resize()).observe(this.area);
    matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => this.refresh());
    document.fonts?.addEventListener?.('loadingdone', () => this.refresh());
  }

  get layout(): Layout | null {
    return this.painter?.layout ?? null;
  }

  show(layout: Layout): void {
    this.painter = new Painter(layout, this.context, this, this.labels);
    this.hovered = -1;
    this.tip.hide();
    this.measure();
    this.camera.reset(layout.whole, (layout.rows.length - 1) * ROW);
    this.mark(this.app.hits?.bits ?? null);
  }

  // What a search found; by node.
  mark(bits: Uint8Array | null): void {
    const { layout } = this;
    this.hitsBefore = null;
    if (layout && bits) {
      const before = (this.hitsBefore = new Int32Array(layout.count + 1));
      for (let i = 0; i < bits.length; i++) if (bits[i]) before[layout.boxOf[i] + 1] = 1;
      for (let box = 0; box < layout.count; box++) before[box + 1] += before[box];
    }
    if (this.painter) this.painter.hitsBefore = this.hitsBefore;
    this.refresh();
  }

  toneOf(node: number, isShaded: boolean): Tone {
    const { trace } = this.app, area = areaOf(trace, node);
    const name = trace.name[node] + 1, shade = isShaded ? (name ^ (name >> 2)) & 3 : 0;
    return (this.tones[area * 4 + shade] ??= toneOf(areaColour(area, isDark()), shade, this.ground, this.mixer));
  }

  refresh(): void {
    this.tones = [];
    this.isMapStale = true;
    this.schedule();
  }

  schedule(): void {
    this.frame ||= requestAnimationFrame(() => {
      this.frame = 0;
      if (this.painter && this.area.clientWidth) this.draw();
    });
  }

  // Pixels from the left of the canvas.
  across(clientX: number): number {
    return clientX - this.canvas.getBoundingClientRect().left;
  }

  boxAt(clientX: number, clientY: number): number {
    if (!this.painter) return -1;
    const edge = this.canvas.getBoundingClientRect(), { from, top, scale } = this.camera;
    const y = clientY - edge.top - RULER;
    if (y < 0 || y >= this.camera.height) return -1;
    return this.painter.at(Math.floor((y + top) / ROW), from + (clientX - edge.left) / scale, SLACK / scale);
  }

  rowOf(box: number): number {
    const { rows } = this.layout!;
    let low = 0, high = rows.length - 1;
    while (low + 1 < high) {
      const middle = (low + high) >> 1;
      if (rows[middle] <= box) low = middle;
      else high = middle;
    }
    return low;
  }

  hover(box: number, clientX: number, clientY: number): void {
    const edge = this.root.getBoundingClientRect();
    this.hovered = box;
    this.canvas.classList.toggle('flame-over', box >= 0);
    if (box < 0 || !this.layout) this.tip.hide();
    else this.tip.show(this.layout, box, clientX - edge.left, clientY - edge.top, edge.width, edge.height);
    this.outline(this.hoverFrame, box);
  }

  // The size that it has on the page now.
  measure(): void {
    const width = this.area.clientWidth, height = this.area.clientHeight, ratio = devicePixelRatio || 1;
    const [across, down] = [Math.round(width * ratio), Math.round(height * ratio)];
    if (!width || (this.canvas.width === across && this.canvas.height === down && this.camera.width === width)) return;
    this.canvas.width = across;
    this.canvas.height = down;
    const { camera, selected } = this, y = selected < 0 || !this.layout ? -1 : this.rowOf(selected) * ROW;
    const { top } = camera.goal, wasSeen = y >= top && y < top + camera.height;
    camera.resize(width, height - RULER);
    this.isMapStale = true;
    // Details that open below take room from the box that they are about.
    if (wasSeen && y + ROW > top + camera.height) camera.go({ ...camera.goal, top: y + 2 * ROW - camera.height }, false);
  }

  private resize(): void {
    this.measure();
    // At once: a canvas that got a size is empty.
    if (this.painter && this.area.clientWidth) this.draw();
  }

  private draw(): void {
    const { context, camera, canvas } = this, painter = this.painter!, ratio = devicePixelRatio || 1;
    const style = getComputedStyle(this.area);
    this.ground = style.backgroundColor;
    this.error = getComputedStyle(this.probe).color;
    const line = getComputedStyle(this.probe).borderTopColor;
    const { from, to, width, height, top } = camera;
    const pane: Pane = { from, to, width, height, top: Math.round(top), rowHeight: ROW };
    context.setTransform(ratio, 0, 0, ratio, 0, 0);
    context.clearRect(0, 0, width, height + RULER);
    context.font = FONT;
    context.textBaseline = 'middle';
    context.direction = 'ltr';
    this.labels.measure();
    this.ruler(pane, line);
    context.translate(0, RULER);
    painter.paint(pane);
    painter.paintErrors(pane);
    context.translate(0, -RULER);
    context.clearRect(0, 0, width, RULER);
    this.ruler(pane, line, style.color);
    if (this.isMapStale) setTimeout(() => this.paintMap());
    this.overlay();
    canvas.dataset.boxes = String(painter.drawn);
    canvas.dataset.range = `${from} ${to}`;
    canvas.dataset.whole = String(camera.whole);
    this.drawn();
    // Row r begins at ruler + r * rowHeight - top.
    Object.assign(canvas.dataset, { rows: painter.layout.rows.length - 1, rowHeight: ROW, top: pane.top, ruler: RULER });
  }

  private ruler(pane: Pane, line: string, text?: string): void {
    const { weight, whole, times } = this.painter!.layout;
    if (times) paintShares(this.context, pane, whole, line, text);
    else paintRuler(this.context, pane, weight, line, text);
  }

  // In a task of its own, so that no frame has to wait for both pictures.
  private paintMap(): void {
    if (!this.isMapStale || !this.painter) return;
    this.isMapStale = false;
    this.map.paint(this.painter.layout, this.hitsBefore);
  }

  private overlay(): void {
    const { camera } = this;
    this.map.follow();
    this.outline(this.selectedFrame, this.selected);
    this.outline(this.hoverFrame, this.hovered);
    this.thumb.hidden = camera.depth <= camera.height;
    this.thumb.style.top = `${RULER + (camera.top / camera.depth) * camera.height}px`;
    this.thumb.style.height = `${(camera.height / camera.depth) * camera.height}px`;
  }

  private outline(frame: HTMLElement, box: number): void {
    const { layout, camera } = this;
    frame.hidden = !layout || box < 0 || box >= layout.count;
    if (frame.hidden) return;
    const left = (layout!.x[box] - camera.from) * camera.scale, right = left + layout!.width[box] * camera.scale;
    const start = Math.max(-3, Math.round(left)), end = Math.min(camera.width + 3, Math.round(right));
    const y = this.rowOf(box) * ROW - Math.round(camera.top);
    frame.hidden = end < -3 || start > camera.width + 3 || y < -ROW || y > camera.height;
    frame.style.left = `${start}px`;
    frame.style.width = `${Math.max(3, end - start - 1)}px`;
    frame.style.top = `${y}px`;
    frame.style.height = `${ROW - 1}px`;
  }
}
