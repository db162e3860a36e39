// SPDX-License-Identifier: MIT
//
// The trace as columns. A node's `index` is its place in them, its `id` its number in the trace.
import { dropBlock, readBlock, readJson } from './blocks';
import { Column } from './columns';

export const Kind = {
  request: 0,
  call: 1,
  include: 2,
  write: 3,
  flush: 4,
  header: 5,
  send_headers: 6,
  exit: 7,
  error: 8,
  event: 9,
} as const;
export const kindNames = [
  'request',
  'call',
  'include',
  'write',
  'flush',
  'header',
  'send_headers',
  'exit',
  'error',
  'event',
];
export const Flag = {
  outcome: 3,
  hasMemory: 4,
  hasDelta: 8,
  untimed: 16,
  endUntimed: 32,
  moved: 64,
  hasValues: 128,
} as const;
export const Outcome = { none: 0, ended: 1, threw: 2, open: 3 } as const;

export interface Meta {
  schema: string;
  trace: string;
  title: string;
  made_by: string;
  started_ns: string;
  nodes: number;
  damaged: number;
  untimed: number;
  moved: number;
  blocks: number[]; // entries of each block of values; negative: left out
  left_out: { nodes: number; longest_ns: number; max_size: number };
}

export interface Functions {
  name: string[];
  file: number[];
  line: number[];
  builtin: number[];
  calls: number[];
  total_ns: number[];
  own_ns: number[];
  own_memory: number[];
}

export interface Trace {
  meta: Meta;
  summary: any; // what `cttool summary --format json` prints
  response: any; // what `cttool response --format json` prints, without the body
  count: number;
  whole: number; // ns of the request, which may have more nodes than the page
  id: Int32Array;
  kind: Uint8Array;
  flags: Uint8Array;
  depth: Int32Array;
  parent: Int32Array; // index, -1 for the request
  last: Int32Array; // index of the last node under it; itself if there is none
  name: Int32Array; // number of a call's function, else of a label; -1 none
  start: Float64Array; // ns since the request's begin, as all times
  total: Float64Array;
  own: Float64Array;
  memory: Float64Array; // bytes; NaN where the trace does not say
  growth: Float64Array; // from begin to end
  ownMemory: Float64Array; // growth less that of the children
  file: Int32Array; // -1 none
  line: Int32Array;
  functions: Functions;
  labels: string[];
  files: string[];
  classes: string[];
}

export function indexOf(trace: Trace, id: number): number {
  let low = 0;
  let high = trace.count - 1;
  while (low <= high) {
    const middle = (low + high) >> 1;
    if (trace.id[middle] === id) return middle;
    if (trace.id[middle] < id) low = middle + 1;
    else high = middle - 1;
  }
  return -1;
}

export function outcomeOf(trace: Trace, index: number): number {
  return trace.flags[index] & Flag.outcome;
}

export function labelOf(trace: Trace, index: number): string {
  const name = trace.name[index];
  if (name < 0) return '';
  return (trace.kind[index] === Kind.call ? trace.functions.name : trace.labels)[name] ?? '';
}

// A closure's name ends in its whole path; what it is called is the class and that it is one.
export function shortFunction(trace: Trace, number: number): string {
  const name = trace.functions.name[number] ?? '';
  if (!name.endsWith('{closure}')) return name;
  const at = name.indexOf('::');
  const file = trace.files[trace.functions.file[number]];
  const place =
    file === undefined ? '' : ` ${file.slice(file.lastIndexOf('/') + 1)}:${trace.functions.line[number]}`;
  return (at < 0 ? name : `${name.slice(0, at + 2)}{closure}`) + place;
}

// What a node is called in one line: "Note::save", "include /a/b.php", "header Content-Type: …".
export function nameOf(trace: Trace, index: number): string {
  if (index < 0) return '(not in this page)';
  const kind = trace.kind[index];
  const label = labelOf(trace, index);
  switch (kind) {
    case Kind.call:
      return trace.name[index] < 0 ? '(unknown function)' : shortFunction(trace, trace.name[index]);
    case Kind.request:
      return label || 'request';
    case Kind.error:
      return label || 'error';
    case Kind.send_headers:
      return `headers sent${label && `: ${label}`}`;
    case Kind.write:
      return 'output';
    case Kind.exit:
      return `exit${label && ` ${label}`}`;
    default:
      return `${kindNames[kind] ?? 'node'}${label && ` ${label}`}`;
  }
}

async function column(name: string): Promise<Column> {
  const bytes = await readBlock(`nodes-${name}`);
  dropBlock(`nodes-${name}`);
  return new Column(bytes);
}

async function bytes(name: string, count: number): Promise<Uint8Array> {
  const read = await readBlock(`nodes-${name}`);
  const whole = new Uint8Array(count);
  whole.set(read.subarray(0, count));
  return whole;
}

// Fills what follows from depths and totals: parents, ends, what is own.
function relate(trace: Trace, around: Int32Array): void {
  const { count, depth, parent, last, own, total, growth, ownMemory } = trace;
  let open = 0;
  for (let i = 0; i < count; ++i) {
    while (open > 0 && depth[around[open - 1]] >= depth[i]) --open;
    parent[i] = open > 0 ? around[open - 1] : -1;
    around[open++] = i;
    last[i] = i;
    own[i] = total[i];
    ownMemory[i] = growth[i] || 0;
  }
  for (let i = count - 1; i > 0; --i) {
    const above = parent[i];
    if (above < 0) continue;
    if (last[i] > last[above]) last[above] = last[i];
    own[above] -= total[i];
    ownMemory[above] -= growth[i] || 0;
  }
  for (let i = 0; i < count; ++i) {
    if (own[i] < 0) own[i] = 0;
    // Kept: what children took counts even where the node's own growth is unknown, as in the profile.
    if (Number.isNaN(growth[i]) && ownMemory[i] === 0) ownMemory[i] = NaN;
  }
}

const columnNames = ['id', 'depth', 'name', 'start', 'total', 'memory', 'growth', 'file', 'line'] as const;
type Columns = Record<(typeof columnNames)[number], Column>;

async function readColumns(): Promise<Columns> {
  const read = await Promise.all(columnNames.map(async (name) => [name, await column(name)] as const));
  return Object.fromEntries(read) as Columns;
}

// Nodes of which only the count is known.
function emptyNodes(count: number) {
  const ints = () => new Int32Array(count);
  const doubles = () => new Float64Array(count);
  return {
    ...{ id: ints(), depth: ints(), parent: ints(), last: ints(), name: ints(), file: ints(), line: ints() },
    ...{ start: doubles(), total: doubles(), own: doubles() },
    ...{ memory: doubles(), growth: doubles(), ownMemory: doubles() },
  };
}

function fill(trace: Trace, from: Columns): void {
  const { flags } = trace;
  let [id, depth, start, memory, line] = [-1, 0, 0, 0, 0];
  for (let i = 0; i < trace.count; ++i) {
    trace.id[i] = id += from.id.varint();
    trace.depth[i] = depth += from.depth.signed();
    trace.name[i] = from.name.varint() - 1;
    trace.start[i] = start += from.start.signed();
    trace.total[i] = from.total.varint();
    trace.memory[i] = flags[i] & Flag.hasMemory ? (memory += from.memory.signed()) : NaN;
    trace.growth[i] = flags[i] & Flag.hasDelta ? from.growth.signed() : NaN;
    trace.file[i] = from.file.varint() - 1;
    trace.line[i] = trace.file[i] < 0 ? 0 : (line += from.line.signed());
  }
}

export async function readTrace(): Promise<Trace> {
  const meta = await readJson<Meta>('meta');
  const count = meta.nodes;
  const [summary, response, functions, labels, files, classes, kind, flags, columns] = await Promise.all([
    readJson<Trace['summary']>('summary'),
    readJson<Trace['response']>('response'),
    readJson<Functions>('functions'),
    readJson<string[]>('labels'),
    readJson<string[]>('files'),
    readJson<string[]>('classes'),
    bytes('kind', count),
    bytes('flags', count),
    readColumns(),
  ]);
  const texts = { meta, summary, response, functions, labels, files, classes };
  const trace: Trace = {
    ...texts,
    count,
    whole: summary.request.total_ns,
    kind,
    flags,
    ...emptyNodes(count),
  };
  fill(trace, columns);
  relate(trace, new Int32Array(count));
  return trace;
}
