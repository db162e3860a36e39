// SPDX-License-Identifier: MIT
//
// The colours of boxes: one for each area, in shades so that neighbours can be told apart, faded
// where a search found something else, and for each the colour of text that can be read on it.

export interface Tone {
  readonly fill: string;
  readonly thin: readonly string[]; // the fill where boxes cover a part of it only, up to all of it
  readonly text: string;
  readonly faded: string;
  readonly fadedText: string;
}

type Rgb = readonly [number, number, number];

export const COVERED = [0.18, 0.32, 0.48, 0.64, 0.82, 1]; // parts of a pixel that boxes can be told to cover

const SHADES = [0, 0.09, -0.07, 0.17];
const FADED = 0.78;

// Through a canvas, which knows all the ways to write a colour.
export function rgbOf(colour: string, context: CanvasRenderingContext2D): Rgb {
  context.fillStyle = '#000000';
  context.fillStyle = colour;
  const hex = parseInt(String(context.fillStyle).slice(1, 7), 16) || 0;
  return [hex >> 16, (hex >> 8) & 255, hex & 255];
}

function mix(a: Rgb, b: Rgb, part: number): Rgb {
  return [0, 1, 2].map((i) => Math.round(a[i] + (b[i] - a[i]) * part)) as unknown as Rgb;
}

const css = (colour: Rgb): string => `rgb(${colour.join()})`;

function luminance(colour: Rgb): number {
  const [r, g, b] = colour.map((part) => {
    const share = part / 255;
    return share <= 0.04045 ? share / 12.92 : ((share + 0.055) / 1.055) ** 2.4;
  });
  return 0.2126 * r + 0.7152 * g + 0.0722 * b;
}

// Black or white, whichever stands out more.
function readable(on: Rgb): string {
  return luminance(on) > 0.179 ? '#000' : '#fff';
}

export function toneOf(colour: string, shade: number, ground: string, context: CanvasRenderingContext2D): Tone {
  const part = SHADES[shade & 3];
  const fill = mix(rgbOf(colour, context), part < 0 ? [0, 0, 0] : [255, 255, 255], Math.abs(part));
  const faded = mix(fill, rgbOf(ground, context), FADED);
  const thin = COVERED.map((part) => css(mix(rgbOf(ground, context), fill, part)));
  return { fill: css(fill), thin, text: readable(fill), faded: css(faded), fadedText: readable(faded) };
}
