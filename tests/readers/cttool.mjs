// SPDX-License-Identifier: MIT
// What all readers' checks start from: the companion's own figures, its exports, and a line for each
// check that passed. A check that fails throws, which ends the script with what was wrong.
//
// A script is called with the companion and the traces: node NAME.mjs CTTOOL TRACE...
import { execFileSync } from "node:child_process";
import { mkdtempSync, rmSync, statSync } from "node:fs";
import { tmpdir } from "node:os";
import { basename, join } from "node:path";

export const [tool, ...traces] = process.argv.slice(2);
if (!tool || traces.length === 0) {
  console.error(`usage: ${basename(process.argv[1])} CTTOOL TRACE...`);
  process.exit(2);
}

export const folder = mkdtempSync(join(tmpdir(), "codetrace-readers-"));
process.on("exit", () => rmSync(folder, { recursive: true, force: true }));

export const stem = (trace) => basename(trace, ".ct");

export function run(program, ...options) {
  return execFileSync(program, options, {
    encoding: "utf8",
    maxBuffer: 2 ** 30,
    stdio: ["ignore", "pipe", "inherit"],
  });
}

// The rows of a query, as objects.
export function rows(trace, query) {
  const lines = run(tool, "sql", trace, "--format", "jsonl", query).split("\n");
  return lines.filter(Boolean).map((line) => JSON.parse(line));
}

export function request(trace) {
  return rows(trace, "select * from request")[0];
}

// Every function of the profile, as `cttool top` tells of it.
export function profile(trace) {
  const top = JSON.parse(run(tool, "top", trace, "--limit", "0", "--format", "json"));
  if (top.rows.length === 0) throw new Error(`${trace}: a profile without functions`);
  return top.rows;
}

// Writes an export to a file of this name and returns the file's path.
export function exported(trace, format, name, ...options) {
  const file = join(folder, name);
  run(tool, "export", trace, "--to", format, "-o", file, ...options);
  if (statSync(file).size === 0) throw new Error(`${file} is empty`);
  return file;
}

// Adds up, by key: sums([["f", {own: 1}], ["f", {own: 2}]]) is a map from f to {own: 3}.
export function sums(pairs) {
  const all = new Map();
  for (const [key, figures] of pairs) {
    const sum = all.get(key) ?? {};
    for (const name in figures) sum[name] = (sum[name] ?? 0) + figures[name];
    all.set(key, sum);
  }
  return all;
}

export function same(what, got, wanted) {
  const [is, should] = [got, wanted].map((value) => JSON.stringify(value));
  if (is !== should) throw new Error(`${what}: ${is} instead of ${should}`);
}

// Both maps have the same keys with the same figures.
export function sameSums(what, got, wanted) {
  if (wanted.size === 0) throw new Error(`${what}: nothing to compare with`);
  for (const [key, figures] of wanted) same(`${what} of ${key}`, got.get(key), figures);
  same(`${what}, number of them`, got.size, wanted.size);
}

export function passed(reader, trace, text) {
  console.log(`ok  ${reader.padEnd(24)} ${basename(trace).padEnd(16)} ${text}`);
}
