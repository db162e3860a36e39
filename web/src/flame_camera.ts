// SPDX-License-Identifier: MIT
//
// What part of a layout the flame graph shows: a range across, in the layout's unit, and how far
// down it is scrolled, in pixels. It moves smoothly where the reader has nothing against motion.

const SOFT_MS = 160;
const CLOSEST = 1 / 2 ** 40; // of the whole

export interface Place {
  from: number;
  to: number;
  top: number;
}

export class Camera {
  from = 0;
  to = 1;
  top = 0;
  whole = 1;
  width = 1; // pixels
  height = 1;
  depth = 0; // pixels of all rows
  goal: Place = { from: 0, to: 1, top: 0 }; // where it is, or is on its way to
  private frame = 0;

  constructor(private readonly moved: () => void) {}

  get scale(): number {
    return this.width / (this.to - this.from);
  }

  // Another layout: everything of it is shown.
  reset(whole: number, depth: number): void {
    this.stop();
    this.whole = whole || 1;
    this.depth = depth;
    this.from = this.top = 0;
    this.to = this.whole;
    this.goal = { from: 0, to: this.whole, top: 0 };
  }

  resize(width: number, height: number): void {
    this.width = Math.max(1, width);
    this.height = height;
    this.keep();
  }

  // Zooms by a factor, so that what is at a pixel across stays there.
  zoom(factor: number, at: number, isSoft = false): void {
    const now = isSoft ? this.goal : this, span = now.to - now.from;
    const wanted = Math.min(this.whole, Math.max(this.whole * CLOSEST, span / factor));
    const share = at / this.width;
    const from = now.from + (span - wanted) * share;
    this.go({ from, to: from + wanted, top: now.top }, isSoft);
  }

  pan(across: number, down: number, isSoft = false): void {
    const now = isSoft ? this.goal : this, shift = (across / this.width) * (now.to - now.from);
    this.go({ from: now.from + shift, to: now.to + shift, top: now.top + down }, isSoft);
  }

  go(to: Place, isSoft = true): void {
    this.stop();
    const goal = (this.goal = this.within(to));
    if (!isSoft || matchMedia('(prefers-reduced-motion: reduce)').matches) return this.set(goal);
    const start = { from: this.from, to: this.to, top: this.top }, begin = performance.now();
    const step = (): void => {
      const part = Math.min(1, (performance.now() - begin) / SOFT_MS);
      const eased = part * (2 - part);
      const between = (a: number, b: number): number => (part === 1 ? b : a + (b - a) * eased);
      this.frame = part < 1 ? requestAnimationFrame(step) : 0;
      this.set({
        from: between(start.from, goal.from), to: between(start.to, goal.to), top: between(start.top, goal.top),
      });
    };
    this.frame = requestAnimationFrame(step);
  }

  private stop(): void {
    cancelAnimationFrame(this.frame);
    this.frame = 0;
  }

  private set(place: Place): void {
    this.from = place.from;
    this.to = place.to;
    this.top = place.top;
    this.moved();
  }

  private keep(): void {
    const place = this.within(this);
    this.from = place.from;
    this.to = place.to;
    this.top = place.top;
    this.goal = this.within(this.goal);
  }

  private within(place: Place): Place {
    const span = Math.min(this.whole, Math.max(this.whole * CLOSEST, place.to - place.from));
    const from = Math.min(this.whole - span, Math.max(0, place.from));
    return { from, to: from + span, top: Math.max(0, Math.min(this.depth - this.height, place.top)) };
  }
}
