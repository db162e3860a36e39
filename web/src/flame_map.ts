// SPDX-License-Identifier: MIT
//
// The whole picture in small above the flame graph, with a frame around what is shown below. It can
// be dragged, or a new range drawn on it. It repeats what keys and buttons do, so it is no control
// of its own for the keyboard.
import { h } from './dom';
import type { Camera } from './flame_camera';
import { Painter, type Look } from './flame_paint';
import type { Layout } from './flame_layout';

export const MAP = 44; // pixels

export class FlameMap {
  readonly root: HTMLElement;
  private readonly canvas = h('canvas');
  private readonly frame = h('div', { class: 'flame-frame' });
  private readonly context = this.canvas.getContext('2d')!;
  private grip = NaN; // where in the frame it was taken, in units of the layout
  private begin = 0;

  constructor(private readonly camera: Camera, private readonly look: Look) {
    this.root = h('div', {
      class: 'flame-map', 'aria-hidden': 'true',
      onpointerdown: (event: PointerEvent) => this.down(event),
      onpointermove: (event: PointerEvent) => this.drag(event),
    }, this.canvas, this.frame);
  }

  paint(layout: Layout, hitsBefore: Int32Array | null): void {
    const { camera, canvas, context } = this, ratio = devicePixelRatio || 1;
    canvas.width = Math.round(camera.width * ratio);
    canvas.height = Math.round(MAP * ratio);
    context.scale(ratio, ratio);
    const painter = new Painter(layout, context, this.look, null);
    painter.hitsBefore = hitsBefore;
    const rowHeight = Math.min(6, MAP / Math.max(1, layout.rows.length - 1));
    painter.paint({ from: 0, to: camera.whole, width: camera.width, height: MAP, top: 0, rowHeight });
    this.follow();
  }

  // The camera moved.
  follow(): void {
    const { from, to, whole } = this.camera;
    this.frame.style.left = `${(from / whole) * 100}%`;
    this.frame.style.width = `${((to - from) / whole) * 100}%`;
  }

  private at(event: PointerEvent): number {
    const box = this.root.getBoundingClientRect();
    return ((event.clientX - box.left) / box.width) * this.camera.whole;
  }

  private down(event: PointerEvent): void {
    const at = this.at(event), { from, to, whole } = this.camera;
    this.root.setPointerCapture(event.pointerId);
    this.begin = at;
    this.grip = at >= from && at <= to && to - from < whole ? at - from : NaN;
  }

  private drag(event: PointerEvent): void {
    if (!this.root.hasPointerCapture(event.pointerId)) return;
    const at = this.at(event), { from, to, top, width, whole } = this.camera;
    const isMove = !Number.isNaN(this.grip);
    const low = isMove ? at - this.grip : Math.min(at, this.begin);
    const high = isMove ? low + to - from : Math.max(at, this.begin);
    if (isMove || high - low > (3 / width) * whole) this.camera.go({ from: low, to: high, top }, false);
  }
}
