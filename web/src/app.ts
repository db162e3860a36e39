// SPDX-License-Identifier: MIT
//
// What the parts of the page know of each other: the trace, the selected node, the hits of a search.
import type { Trace } from './trace';
import type { Values } from './values';

// Nodes that a search found.
export interface Hits {
  bits: Uint8Array; // 1 = hit, by index
  list: Int32Array; // indexes, ascending
  at: number; // the one that is looked at, in the list; -1 none
}

export interface View {
  readonly key: string; // in the page's address
  readonly title: string;
  readonly root: HTMLElement;
  show(): void; // it is on the page now and has a size
  hide(): void;
  focus?(): void; // takes the keys, after it was opened by one
  selected?(index: number): void; // -1: none
  found?(hits: Hits | null): void;
  argument?(said: string): void; // what it has to show, from the page's address; '' nothing in particular
}

export interface App {
  trace: Trace;
  values: Values;
  selected: number; // index; -1 none
  hits: Hits | null;
  // Marks the node everywhere, shows its details, opens a view if one is named.
  select(index: number, how?: { open?: string }): void;
  // Shows a view; `argument` is for the view, as a function's number for "functions".
  open(key: string, argument?: string): void;
}

export function isDark(): boolean {
  return matchMedia('(prefers-color-scheme: dark)').matches;
}
