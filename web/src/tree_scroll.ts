// SPDX-License-Identifier: MIT
//
// Scrolls over more rows than a browser can make an element high for. Where it can, the scroll bar
// is exact; else it stands for the whole in small, and short ways are taken pixel by pixel.
export const ROW = 24; // pixels

const HIGHEST = 6e6; // pixels, which every browser allows
const SETTLED_MS = 160;

export class Scroller {
  offset = 0; // pixels above the first visible row
  height = 0; // pixels for rows
  private rows = 0;
  private latest = 0; // where the element was scrolled to
  private timer = 0;

  constructor(private readonly element: HTMLElement, private readonly body: HTMLElement,
    private readonly head: HTMLElement, private readonly moved: () => void) {
    element.addEventListener('scroll', () => this.scrolled(), { passive: true });
  }

  setRows(rows: number): void {
    this.rows = rows;
    this.body.style.height = `${Math.min(HIGHEST, rows * ROW)}px`;
    this.resize();
  }

  resize(): void {
    this.height = Math.max(0, this.element.clientHeight - this.head.offsetHeight);
    this.to(this.offset);
  }

  to(offset: number): void {
    this.offset = Math.max(0, Math.min(this.most, offset));
    this.settle();
    this.moved();
  }

  // Moves as little as needed for a row to be seen.
  reveal(row: number, isCentred = false): void {
    const top = row * ROW, bottom = top + ROW, height = Math.max(ROW, this.height - this.covered());
    if (top >= this.offset && bottom <= this.offset + height) return;
    if (isCentred) this.to(top - Math.max(0, height - ROW) / 2);
    else this.to(top < this.offset ? top : bottom - height);
  }

  // Pixels of it that lie under the details, where those have no side of their own.
  private covered(): number {
    const own = this.element.getBoundingClientRect(), details = document.getElementById('details')?.getBoundingClientRect();
    return details && details.height && details.left <= own.left ? Math.max(0, own.bottom - Math.max(own.top, details.top)) : 0;
  }

  private get most(): number {
    return Math.max(0, this.rows * ROW - this.height);
  }

  private get isExact(): boolean {
    return this.rows * ROW <= HIGHEST;
  }

  private get reach(): number {
    return Math.max(1, this.element.scrollHeight - this.element.clientHeight);
  }

  private scrolled(): void {
    const now = this.element.scrollTop, way = now - this.latest;
    if (Math.abs(way) < 1) return;
    this.latest = now;
    if (this.isExact) this.offset = now;
    else if (now <= 0) this.offset = 0;
    else if (now >= this.reach - 1) this.offset = this.most;
    else if (Math.abs(way) > 3 * this.height) this.offset = (now / this.reach) * this.most;
    else this.offset = Math.max(0, Math.min(this.most, this.offset + way));
    if (!this.isExact) {
      clearTimeout(this.timer);
      this.timer = window.setTimeout(() => this.settle(), SETTLED_MS);
    }
    this.moved();
  }

  // Puts the scroll bar where the offset is.
  private settle(): void {
    const wanted = this.isExact ? this.offset : (this.offset / (this.most || 1)) * this.reach;
    if (Math.abs(this.element.scrollTop - wanted) >= 1) this.element.scrollTop = wanted;
    this.latest = this.element.scrollTop;
  }
}
