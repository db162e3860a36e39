// SPDX-License-Identifier: MIT
// callgrind_annotate adds up to the profile of `cttool top`: own and total time, calls; and its trees tell
// who called whom how often, and how long that took.
import { readFileSync } from "node:fs";
import { basename } from "node:path";
import { exported, passed, profile, request, rows, run, same, sameSums, stem, sums, traces } from "./cttool.mjs";

const figure = (text) => Number(text.replaceAll(",", ""));

// Calls inside of a call of the same function have names of their own, such as f'2.
const outermost = (name) => !/'\d+$/.test(name);
const plain = (name) => name.replace(/'\d+$/, "");

// callgrind_annotate prints FILE:FUNCTION, and both may have colons.
function nameCutter(file) {
  const text = readFileSync(file, "utf8");
  const names = (what) => [...text.matchAll(new RegExp(`^c?(?:${what})=\\(\\d+\\) (.*)$`, "gm"))].map((found) => found[1]);
  const functions = new Set(names("fn"));
  const longest = names("fl|fi").sort((one, other) => other.length - one.length);
  return (label) => {
    for (const start of longest) {
      const name = label.slice(start.length + 1);
      if (label.startsWith(`${start}:`) && functions.has(name)) return name;
    }
    throw new Error(`${basename(file)}: callgrind_annotate shows ${label}`);
  };
}

const line = /^ *([\d,]+) +([\d,]+) +([\d,]+) +([<*>]?) *(.*?)(?: \(([\d,]+)x\))?(?: \[\])?$/;

function annotated(file, ...options) {
  const nameOf = nameCutter(file);
  const text = run("callgrind_annotate", "--threshold=100", "--show-percs=no", "--auto=no", ...options, file);
  const [, table] = text.split(/^-+\nTime_ns.*file:function\n-+\n/m);
  if (table === undefined) throw new Error(`${basename(file)}: no table of functions`);
  return table.split("\n").filter((row) => row !== "").map((row) => {
    const [, time, growth, calls, mark, label, count] = row.match(line) ?? [];
    if (label === undefined) throw new Error(`${basename(file)}: a line ${row}`);
    return { time: figure(time), growth: figure(growth), calls: figure(calls), mark, name: nameOf(label),
      count: figure(count ?? "0") };
  });
}

// Who called whom, of those pairs that the trace has as calls of calls.
function checkCallers(trace, tree) {
  const wanted = sums(rows(trace, `select p.name as caller, c.name as callee, count(*) as calls,
      sum(c.total_ns) as total from calls c join calls p on p.id = c.parent group by 1, 2`)
    .map(({ caller, callee, calls, total }) => [`${caller} > ${callee}`, { calls, total }]));
  let caller;
  const pairs = [];
  for (const { mark, name, time, count } of tree) {
    if (mark === "*") caller = name;
    if (mark === ">") pairs.push([`${plain(caller)} > ${plain(name)}`, { calls: count, total: time }]);
  }
  const got = sums(pairs.filter(([key]) => wanted.has(key)));
  sameSums("calls", got, wanted);
  return wanted.size;
}

for (const trace of traces) {
  const file = exported(trace, "callgrind", `callgrind.out.${stem(trace)}`);
  const functions = profile(trace);
  const wanted = sums(functions.map(({ name, own_ns, calls }) => [name, { own_ns, calls }]));

  const own = annotated(file);
  same("sum of own times", own.reduce((sum, { time }) => sum + time, 0), request(trace).total_ns);
  sameSums("own time", sums(own.filter(({ name }) => wanted.has(plain(name)))
    .map(({ name, time, calls }) => [plain(name), { own_ns: time, calls }])), wanted);

  const tree = annotated(file, "--inclusive=yes", "--tree=both");
  sameSums("total time", sums(tree.filter(({ mark, name }) => mark === "*" && outermost(name) && wanted.has(name))
    .map(({ name, time }) => [name, { total_ns: time }])),
  sums(functions.map(({ name, total_ns }) => [name, { total_ns }])));
  const pairs = checkCallers(trace, tree);
  passed("callgrind_annotate", trace, `${wanted.size} functions as in top, ${pairs} pairs of caller and callee`);
}
