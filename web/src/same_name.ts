// SPDX-License-Identifier: MIT
//
// Which nodes count as equal where siblings are put together: calls of functions of one name,
// includes of one file, and otherwise nodes of one kind, as `cttool tree` folds them.
import { Kind, type Trace } from './trace';

export interface Names {
  readonly count: number; // keys are 0..count-1
  keyOf(index: number): number;
}

export function namesOf(trace: Trace): Names {
  const first = new Map<string, number>();
  const functions = trace.functions.name;
  const calls = Int32Array.from(functions, (name, number) => {
    const known = first.get(name);
    if (known === undefined) first.set(name, number);
    return known ?? number;
  });
  const includes = functions.length;
  const others = includes + trace.labels.length + 1;
  const { kind, name } = trace;
  return {
    count: others + 16,
    keyOf(index) {
      if (kind[index] === Kind.call) return calls[name[index]];
      return kind[index] === Kind.include ? includes + name[index] + 1 : others + kind[index];
    },
  };
}
