// SPDX-License-Identifier: MIT
//
// The scale above the boxes: round amounts of time, memory or calls. Where boxes are merged a place
// across means nothing, only a width does: there it says shares of the whole, from the left edge on.
import type { Weight } from './flame_layout';
import type { Pane } from './flame_paint';
import { bytes, count } from './format';

export const RULER = 20; // pixels

const APART = 90; // pixels between two marks, at least

function stepOf(least: number, weight: Weight): number {
  if (weight === 'memory') return 2 ** Math.ceil(Math.log2(Math.max(1, least)));
  const power = 10 ** Math.floor(Math.log10(least));
  const factor = [1, 2, 5].find((each) => each * power >= least) ?? 10;
  return Math.max(1, factor * power);
}

function label(at: number, step: number, weight: Weight): string {
  if (weight === 'memory') return bytes(at);
  if (weight === 'calls') return count(at);
  const digits = Math.max(0, Math.min(6, -Math.floor(Math.log10(step / 1e6))));
  const [whole, part] = (at / 1e6).toFixed(digits).split('.');
  return `${count(Number(whole))}${part ? `.${part}` : ''} ms`;
}

// Parts of the whole, as many digits as their steps need.
function shareLabel(at: number, step: number): string {
  return at === 0 ? '0 %' : `${(at * 100).toFixed(Math.max(0, Math.min(9, -Math.floor(Math.log10(step * 100) + 1e-9))))} %`;
}

export function paintShares(context: CanvasRenderingContext2D, pane: Pane, whole: number, line: string, text?: string): void {
  const scale = (pane.width / (pane.to - pane.from)) * whole, least = APART / scale;
  const power = 10 ** Math.floor(Math.log10(least)), step = ([1, 2, 5].find((each) => each * power >= least) ?? 10) * power;
  for (let mark = 0; mark * step * scale < pane.width; mark++) {
    paintMark(context, pane, Math.round(mark * step * scale), line, text && shareLabel(mark * step, step), text);
  }
}

function paintMark(context: CanvasRenderingContext2D, pane: Pane, x: number, line: string, said?: string, text?: string): void {
  context.fillStyle = line;
  context.fillRect(x, 0, 1, said ? RULER : RULER + pane.height);
  if (!said || !text) return;
  context.fillStyle = text;
  context.fillText(said, x + 4, RULER / 2 + 1);
}

// Lines from top to bottom, and with the colour of a text what they are.
export function paintRuler(context: CanvasRenderingContext2D, pane: Pane, weight: Weight, line: string, text?: string): void {
  const scale = pane.width / (pane.to - pane.from), step = stepOf(APART / scale, weight);
  for (let mark = Math.ceil(pane.from / step); mark * step < pane.to; mark++) {
    const x = Math.round((mark * step - pane.from) * scale);
    paintMark(context, pane, x, line, text && label(mark * step, step, weight), text);
  }
}
