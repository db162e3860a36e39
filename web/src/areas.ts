// SPDX-License-Identifier: MIT
//
// The areas of a program, as the summary has them: which one a node belongs to, and its colour.
import { Kind, Trace } from './trace';

export const areaNames: string[] = [];

// Apart from each other, and light enough in both modes for dark text on them.
const light = [
  '#8fb8f0',
  '#f2b880',
  '#8fd3a8',
  '#d9a7e8',
  '#f2a0a8',
  '#e3d06c',
  '#83d2d6',
  '#c3b2f2',
  '#b9d37a',
  '#eab0cf',
  '#bdb8ad',
  '#a9c7c0',
];
const dark = [
  '#7aa5e0',
  '#dfa469',
  '#79c193',
  '#c690d6',
  '#e08a93',
  '#cdbb58',
  '#6dbec2',
  '#ae9de3',
  '#a4bf66',
  '#d79abb',
  '#a5a096',
  '#93b3ac',
];
// What is in no call.
const quietLight: Record<string, string> = {
  '(built-in functions)': '#c3cad6',
  '(output)': '#e6c9a0',
  '(PHP outside of scripts)': '#d5d5d5',
};
const quietDark: Record<string, string> = {
  '(built-in functions)': '#98a2b3',
  '(output)': '#c0a57e',
  '(PHP outside of scripts)': '#8f8f8f',
};

const colours: number[] = [];
let ofFunctions: Int16Array | undefined;
let [builtin, includes, output, request] = [-1, -1, -1, -1];

function place(name: string): number {
  const at = areaNames.indexOf(name);
  return at >= 0 ? at : areaNames.push(name) - 1;
}

// What lies in a folder or namespace: the longest name that begins it.
function areaOfPath(path: string, separator: string): number {
  let best = -1;
  let length = -1;
  areaNames.forEach((name, area) => {
    const below = name.indexOf(`${separator}...`);
    const base = below < 0 ? name : name.slice(0, below);
    const fits = path === base || (below >= 0 && (base === '' || path.startsWith(base + separator)));
    const goodness = 2 * base.length + (below < 0 ? 1 : 0) - (name.endsWith(' (others)') ? 0.5 : 0);
    if (fits && goodness > length) [best, length] = [area, goodness];
  });
  return best;
}

function pathOf(trace: Trace, number: number, isFolder: boolean): string {
  const { name, file } = trace.functions;
  if (isFolder) {
    const path = trace.files[file[number]] ?? '';
    const at = path.lastIndexOf('/');
    return at < 0 ? '.' : path.slice(0, at);
  }
  const full = name[number];
  const member = full.indexOf('::');
  const owner = member < 0 ? full : full.slice(0, member);
  const at = owner.lastIndexOf('\\');
  return at < 0 ? '(global)' : owner.slice(0, at);
}

// Has to be called once, before anything else of this.
export function findAreas(trace: Trace): void {
  const areas = trace.summary.areas;
  for (const row of areas.rows) place(row.name);
  builtin = place('(built-in functions)');
  includes = place('(includes: compiling, top-level code)');
  output = place('(output)');
  request = place('(PHP outside of scripts)');
  const isFolder = areas.by === 'folder';
  const many = trace.functions.name.length;
  ofFunctions = new Int16Array(many);
  const known = new Map<string, number>();
  for (let number = 0; number < many; ++number) {
    if (trace.functions.builtin[number]) {
      ofFunctions[number] = builtin;
      continue;
    }
    const path = pathOf(trace, number, isFolder);
    let area = known.get(path);
    if (area === undefined) known.set(path, (area = areaOfPath(path, isFolder ? '/' : '\\')));
    ofFunctions[number] = area < 0 ? request : area;
  }
  let next = 0;
  areaNames.forEach((name, area) => (colours[area] = name in quietLight ? -1 : next++ % light.length));
}

export function areaOfFunction(number: number): number {
  return ofFunctions?.[number] ?? request;
}

export function areaOf(trace: Trace, index: number): number {
  switch (trace.kind[index]) {
    case Kind.call:
      return areaOfFunction(trace.name[index]);
    case Kind.include:
      return includes;
    case Kind.write:
      return output;
    default:
      return request;
  }
}

export function areaColour(area: number, isDark: boolean): string {
  const quiet = (isDark ? quietDark : quietLight)[areaNames[area]];
  return quiet ?? (isDark ? dark : light)[colours[area] ?? 0];
}
