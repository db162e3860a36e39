// SPDX-License-Identifier: MIT
//
// Who called a function and what it called, as `cttool top --callers` and `--callees` count it: time
// of calls that lie in each other counts once in a group.
import { Kind, shortFunction, type Trace } from './trace';

export interface Group {
  name: string;
  function: number; // -1 where it is none
  node: number; // an index of the group, where it is no function
  calls: number;
  own: number;
  total: number;
  memory: number; // own
}

// Sums over the calls that `groupOf` gives a group, in order of the nodes.
function sumUp(trace: Trace, groupOf: (index: number) => Group | null): void {
  const open: { index: number; group: Group }[] = [];
  const depths = new Map<Group, number>();
  for (let i = 0; i < trace.count; ++i) {
    const group = groupOf(i);
    if (!group) continue;
    while (open.length > 0 && trace.last[open[open.length - 1].index] < i) {
      const { group: left } = open.pop()!;
      depths.set(left, depths.get(left)! - 1);
    }
    const depth = depths.get(group) ?? 0;
    depths.set(group, depth + 1);
    open.push({ index: i, group });
    ++group.calls;
    group.own += trace.own[i];
    if (depth === 0) group.total += trace.total[i];
    group.memory += trace.ownMemory[i] || 0;
  }
}

class Groups {
  private readonly byKey = new Map<number | string, Group>();
  constructor(private readonly trace: Trace) {}

  of(key: number | string, index: number): Group {
    let group = this.byKey.get(key);
    if (!group) {
      const number = typeof key === 'number' ? key : -1;
      group = {
        name: number >= 0 ? shortFunction(this.trace, number) : String(key),
        function: number,
        node: index,
        calls: 0,
        own: 0,
        total: 0,
        memory: 0,
      };
      this.byKey.set(key, group);
    }
    return group;
  }

  all(): Group[] {
    return [...this.byKey.values()];
  }
}

export function callersOf(trace: Trace, number: number): Group[] {
  const groups = new Groups(trace);
  sumUp(trace, (i) => {
    if (trace.kind[i] !== Kind.call || trace.name[i] !== number) return null;
    const above = trace.parent[i];
    if (above >= 0 && trace.kind[above] === Kind.call) return groups.of(trace.name[above], above);
    const isInclude = above >= 0 && trace.kind[above] === Kind.include;
    return groups.of(isInclude ? `include ${trace.labels[trace.name[above]] ?? ''}` : '(request)', above);
  });
  return groups.all();
}

export function calleesOf(trace: Trace, number: number): Group[] {
  const groups = new Groups(trace);
  sumUp(trace, (i) => {
    const above = trace.parent[i];
    if (
      above < 0 ||
      trace.kind[i] !== Kind.call ||
      trace.kind[above] !== Kind.call ||
      trace.name[above] !== number
    )
      return null;
    return groups.of(trace.name[i], i);
  });
  return groups.all();
}

// Its calls, the slowest first.
export function slowestCalls(trace: Trace, number: number, most: number): number[] {
  const calls: number[] = [];
  for (let i = 0; i < trace.count; ++i)
    if (trace.kind[i] === Kind.call && trace.name[i] === number) calls.push(i);
  return calls.sort((a, b) => trace.total[b] - trace.total[a] || a - b).slice(0, most);
}
