// SPDX-License-Identifier: MIT
// callgrind_annotate adds up to the profile of `cttool top`: own and total time, calls; and its trees tell
// who called whom how often, and how long that took.
import { basename } from "node:path";
import { exported, passed, profile, request, rows, run, same, sameSums, stem, sums, traces } from "./cttool.mjs";

const sqlText = (text) => `'${text.replaceAll("'", "''")}'`;
const figure = (text) => Number(text.replaceAll(",", ""));

// Calls inside of a call of the same function have names of their own, such as f'2, and so have outermost ones
// that would close a cycle otherwise, such as f'1.2.
const suffix = /'(\d+)(\.\d+)?$/;
const outermost = (label) => [undefined, "1"].includes(label.match(suffix)?.[1]);
const plain = (label) => label.replace(suffix, "");

// FILE:FUNCTION, as callgrind_annotate prints it; with the line where a file has several of that name.
function labels(functions) {
  const label = ({ name, file }) => `${file ?? "php:internal"}:${name}`;
  const namesakes = sums(functions.map((one) => [label(one), { count: 1 }]));
  return functions.map((one) => (namesakes.get(label(one)).count > 1 ? `${label(one)}:${one.line}` : label(one)));
}

const line = /^ *([\d,]+) +([\d,]+) +([\d,]+) +([<*>]?) *(.*?)(?: \(([\d,]+)x\))?(?: \[\])?$/;

function annotated(file, ...options) {
  const text = run("callgrind_annotate", "--threshold=100", "--show-percs=no", "--auto=no", ...options, file);
  const [, table] = text.split(/^-+\nTime_ns.*file:function\n-+\n/m);
  if (table === undefined) throw new Error(`${basename(file)}: no table of functions`);
  return table.split("\n").filter((row) => row !== "").map((row) => {
    const [, time, , calls, mark, label, count] = row.match(line) ?? [];
    if (label === undefined) throw new Error(`${basename(file)}: a line ${row}`);
    return { time: figure(time), calls: figure(calls), mark, label, count: figure(count ?? "0") };
  });
}

// Functions of one file, name and line, which code made by eval has, are one function in this format, and
// calls of one inside of another are recursion.
function totalOfNamesakes(trace, { name, file, line: at }) {
  const same = `select id from functions where (name, file, line) = (${[name, file].map(sqlText)}, ${at})`;
  const [{ total_ns }] = rows(trace, `with same as materialized (${same}), found as materialized
      (select id, last, total_ns from calls where function in same)
    select sum(total_ns) as total_ns from found c where not exists
      (select 1 from found p where p.id < c.id and p.last >= c.id)`);
  return { total_ns };
}

// The sums of those rows that tell of functions of the trace, by function.
const known = (wanted, pairs) => sums(pairs.filter(([key]) => wanted.has(key)));

function checkFunctions(trace, file, tree) {
  const functions = profile(trace);
  const names = labels(functions);
  const by = (figures) => sums(functions.map((one, index) => [names[index], figures(one)]));

  const own = annotated(file);
  same("own times", own.reduce((sum, { time }) => sum + time, 0), request(trace).total_ns);
  const wantedOwn = by(({ own_ns, calls }) => ({ own_ns, calls }));
  sameSums("own time", known(wantedOwn, own.map(({ label, time, calls }) =>
    [plain(label), { own_ns: time, calls }])), wantedOwn);

  const wantedTotal = by(({ total_ns }) => ({ total_ns }));
  functions.forEach((one, index) => {
    if (names.indexOf(names[index]) < index) wantedTotal.set(names[index], totalOfNamesakes(trace, one));
  });
  sameSums("total time", known(wantedTotal, tree.filter(({ mark, label }) => mark === "*" && outermost(label))
    .map(({ label, time }) => [plain(label), { total_ns: time }])), wantedTotal);
  return functions.length;
}

// Who called whom, of those pairs that the trace has as calls of calls.
function checkCallers(trace, tree) {
  const functions = rows(trace, "select id, name, file, line from functions where calls > 0");
  const names = labels(functions);
  const nameOf = new Map(functions.map(({ id }, index) => [id, names[index]]));
  const wanted = sums(rows(trace, `select p.function as caller, c.function as callee, count(*) as calls,
      sum(c.total_ns) as total from calls c join calls p on p.id = c.parent group by 1, 2`)
    .map(({ caller, callee, calls, total }) => [`${nameOf.get(caller)} > ${nameOf.get(callee)}`, { calls, total }]));
  let caller;
  const pairs = [];
  for (const { mark, label, time, count } of tree) {
    if (mark === "*") caller = label;
    if (mark === ">") pairs.push([`${plain(caller)} > ${plain(label)}`, { calls: count, total: time }]);
  }
  sameSums("calls", known(wanted, pairs), wanted);
  return wanted.size;
}

// In a cycle viewers cannot tell who spent what. What is left when functions without callers are taken away
// again and again is in a cycle or below one.
function checkCycles(trace, tree) {
  const callees = new Map();
  let caller;
  for (const { mark, label } of tree) {
    if (mark === "*") callees.set(caller = label, []);
    if (mark === ">") callees.get(caller).push(label);
  }
  const callers = new Map([...callees.keys()].map((label) => [label, 0]));
  for (const label of [...callees.values()].flat()) callers.set(label, callers.get(label) + 1);
  const free = [...callers.keys()].filter((label) => callers.get(label) === 0);
  for (const label of free) {
    for (const callee of callees.get(label)) {
      callers.set(callee, callers.get(callee) - 1);
      if (callers.get(callee) === 0) free.push(callee);
    }
  }
  if (free.length !== callers.size) {
    throw new Error(`${trace}: ${callers.size - free.length} of ${callers.size} functions are in cycles or below`);
  }
}

for (const trace of traces) {
  const file = exported(trace, "callgrind", `callgrind.out.${stem(trace)}`);
  const tree = annotated(file, "--inclusive=yes", "--tree=both");
  const functions = checkFunctions(trace, file, tree);
  const pairs = checkCallers(trace, tree);
  checkCycles(trace, tree);
  passed("callgrind_annotate", trace, `${functions} functions as in top, ${pairs} pairs of caller and callee`);
}
