// SPDX-License-Identifier: MIT
//
// Mouse, fingers and keys on the flame graph.
import type { Stage } from './flame_stage';

export interface Orders {
  choose(box: number): void; // -1: none
  zoomTo(box: number): void;
  step(key: 'ArrowUp' | 'ArrowDown' | 'ArrowLeft' | 'ArrowRight' | 'Home'): void;
  reset(): boolean; // false if everything was shown already
}

const DRAGGED = 4; // pixels, from which on a press is no click
const ZOOM = 1.5; // a step by keys and buttons
const TWICE = { ms: 400, mouse: 12, finger: 32 }; // a second press so soon and, in pixels, so near means the same box
const WHEEL = 0.0018; // of a pixel that the wheel turns
const PIXELS = [1, 18, 400]; // a pixel, a line, a page of the wheel

export class FlameInput {
  private readonly pointers = new Map<number, PointerEvent>();
  private isDragged = false;
  private clicked: { box: number; at: PointerEvent } | null = null; // the latest click on a box
  private rest: PointerEvent | null = null; // the latest click, until the pointer moves
  private isSwallowing = false; // what else comes of a press that was understood

  constructor(private readonly stage: Stage, private readonly orders: Orders) {
    const { canvas } = stage;
    const on = <E extends Event>(type: string, listener: (event: E) => void): void =>
      canvas.addEventListener(type, listener as EventListener, { passive: false });
    on('pointerdown', (event: PointerEvent) => this.down(event));
    on('pointermove', (event: PointerEvent) => this.move(event));
    on('pointerup', (event: PointerEvent) => this.up(event));
    on('pointercancel', (event: PointerEvent) => this.pointers.delete(event.pointerId));
    on('pointerleave', () => stage.hover(-1, 0, 0));
    on('wheel', (event: WheelEvent) => this.wheel(event));
    on('keydown', (event: KeyboardEvent) => this.key(event));
    // The first click may have opened the details, and the second press meets whatever lies there now.
    document.addEventListener('pointerdown', (event) => this.pressAgain(event), true);
    for (const type of ['mousedown', 'click']) document.addEventListener(type, (event) => this.swallow(event), true);
  }

  zoom(factor: number): void {
    const { camera } = this.stage;
    camera.zoom(factor, camera.width / 2, true);
  }

  private pressAgain(event: PointerEvent): void {
    const { clicked } = this, near = event.pointerType === 'touch' ? TWICE.finger : TWICE.mouse;
    this.isSwallowing = false;
    this.clicked = null;
    if (!clicked || event.button !== 0 || event.timeStamp - clicked.at.timeStamp > TWICE.ms) return;
    if (Math.hypot(event.clientX - clicked.at.clientX, event.clientY - clicked.at.clientY) > near) return;
    this.isSwallowing = true;
    event.stopPropagation();
    this.orders.zoomTo(clicked.box);
  }

  private swallow(event: Event): void {
    if (!this.isSwallowing) return;
    if (event.type === 'click') this.isSwallowing = false;
    event.stopPropagation();
    event.preventDefault();
  }

  private down(event: PointerEvent): void {
    if (event.button !== 0) return;
    this.pointers.set(event.pointerId, event);
    this.stage.canvas.setPointerCapture(event.pointerId);
    if (this.pointers.size === 1) this.isDragged = false;
  }

  private move(event: PointerEvent): void {
    const { stage } = this, before = this.pointers.get(event.pointerId);
    if (!before) {
      if (event.pointerType !== 'touch' && this.isAway(event)) stage.hover(stage.boxAt(event.clientX, event.clientY), event.clientX, event.clientY);
      return;
    }
    const [dx, dy] = [before.clientX - event.clientX, before.clientY - event.clientY];
    if (!this.isDragged && Math.hypot(dx, dy) < DRAGGED) return;
    this.isDragged = true;
    stage.hover(-1, 0, 0);
    const other = [...this.pointers.values()].find((each) => each.pointerId !== event.pointerId);
    if (other) this.pinch(before, event, other);
    else stage.camera.pan(dx, dy);
    this.pointers.set(event.pointerId, event);
  }

  private pinch(before: PointerEvent, now: PointerEvent, other: PointerEvent): void {
    const apart = (event: PointerEvent): number => Math.max(20, Math.abs(event.clientX - other.clientX));
    this.stage.camera.zoom(apart(now) / apart(before), this.stage.across((now.clientX + other.clientX) / 2));
    this.stage.camera.pan((before.clientX - now.clientX) / 2, (before.clientY - now.clientY) / 2);
  }

  private up(event: PointerEvent): void {
    const { stage, orders } = this;
    if (!this.pointers.delete(event.pointerId) || this.isDragged) return;
    const box = stage.boxAt(event.clientX, event.clientY);
    stage.hover(-1, 0, 0);
    this.rest = event;
    this.clicked = box < 0 ? null : { box, at: event };
    orders.choose(box);
  }

  // The pointer has left the place of the latest click: until then no tip lies over what was clicked.
  private isAway(event: PointerEvent): boolean {
    if (this.rest && Math.hypot(event.clientX - this.rest.clientX, event.clientY - this.rest.clientY) < DRAGGED) return false;
    this.rest = null;
    return true;
  }

  private wheel(event: WheelEvent): void {
    const { camera } = this.stage, unit = PIXELS[event.deltaMode] ?? 1;
    const [dx, dy] = [event.deltaX * unit, event.deltaY * unit];
    event.preventDefault();
    this.stage.hover(-1, 0, 0);
    if (event.altKey) camera.pan(0, dy || dx);
    else if (event.shiftKey || Math.abs(dx) > Math.abs(dy)) camera.pan(dx || dy, 0);
    else camera.zoom(Math.exp(-dy * WHEEL * (event.ctrlKey ? 4 : 1)), this.stage.across(event.clientX));
  }

  private key(event: KeyboardEvent): void {
    if (event.ctrlKey || event.metaKey || event.altKey) return;
    const { camera } = this.stage, across = camera.width / 8, down = camera.height / 4;
    const moves: Record<string, [number, number]> = {
      ArrowLeft: [-across, 0], ArrowRight: [across, 0], ArrowUp: [0, -down], ArrowDown: [0, down],
      a: [-across, 0], d: [across, 0], PageUp: [0, -3 * down], PageDown: [0, 3 * down],
    };
    const key = event.key.length === 1 ? event.key.toLowerCase() : event.key;
    const isStep = /^Arrow|^Home$/.test(key) && !event.shiftKey;
    if (isStep) this.orders.step(key as Parameters<Orders['step']>[0]);
    else if (key in moves) camera.pan(...moves[key], true);
    else if (key === '+' || key === '=' || key === 'w') this.zoom(ZOOM);
    else if (key === '-' || key === '_' || key === 's') this.zoom(1 / ZOOM);
    else if (key === 'Enter') this.orders.zoomTo(this.stage.selected);
    else if (key !== 'Escape' || !this.orders.reset()) return;
    this.stage.hover(-1, 0, 0);
    event.preventDefault();
  }
}
