// SPDX-License-Identifier: MIT
// What a report has to show of nodes, as `cttool export` tells of them.
import { run, tool } from "./cttool.mjs";

const members = ["size", "body", "operation", "header", "code", "status", "number", "level", "message", "event", "sequence", "this", "args", "returned", "thrown"];
// Others have an entry only if there is something to say.
const always = new Set(["call", "write", "header", "send_headers", "error", "event"]);
const noCall = 64;

const costClass = ({ kind, total_ns }) => (kind === "call" ? Number(total_ns && BigInt(total_ns).toString(2).length) : noCall);

// The nodes of a trace that have values in a report, in the order in which it has them. The path of an include is
// among its values if it threw, or has a result, which is odd.
export function nodesWithValues(trace) {
  const nodes = [];
  for (const line of run(tool, "export", trace, "--to", "jsonl").split("\n").slice(1)) {
    if (!line) continue;
    const row = JSON.parse(line);
    const said = Object.entries(row).filter(([key]) => members.includes(key) || (key === "path" && ("thrown" in row || "returned" in row)));
    if (said.length > 0 || always.has(row.kind)) nodes.push({ id: row.id, cost: costClass(row), values: Object.fromEntries(said) });
  }
  return nodes.sort((a, b) => b.cost - a.cost || a.id - b.id);
}
