// SPDX-License-Identifier: MIT
// speedscope's published JSON Schema accepts the export, and its events come to the companion's figures.
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import Ajv from "ajv";
import { exported, passed, profile, request, rows, same, sameSums, stem, sums, traces } from "./cttool.mjs";
import { spansOf } from "./speedscope_events.mjs";

const schema = createRequire(import.meta.url)("speedscope/dist/release/file-format-schema.json");
const validate = new Ajv({ strict: false }).compile(schema);

// Own figures by function, of the spans that are calls.
function ownSums(spans, calls) {
  const names = new Set(calls.map(({ name }) => name));
  return sums(spans.filter(({ name }) => names.has(name)).map(({ name, own }) => [name, { calls: 1, own }]));
}

function checkProfile(trace, frames, evented, unit, end, column) {
  same("unit", evented.unit, unit);
  same(`end of ${evented.name}`, evented.endValue, end);
  const spans = spansOf(evented, frames);
  const calls = rows(trace, `select name, count(*) as calls, sum(${column}) as own from calls group by name`);
  const wanted = new Map(calls.map(({ name, ...sum }) => [name, sum]));
  sameSums(`own ${unit}`, ownSums(spans, calls), wanted);
  return spans.length;
}

// Each function has a frame, with the place of its definition.
function checkPlaces(trace, frames) {
  const place = ({ name, file, line }) => JSON.stringify([name, file ?? null, line ?? null]);
  const known = new Set(frames.map(place));
  const functions = profile(trace);
  for (const one of functions) if (!known.has(place(one))) throw new Error(`no frame for ${place(one)}`);
  return functions.length;
}

for (const trace of traces) {
  const file = exported(trace, "speedscope", `${stem(trace)}.speedscope.json`);
  const document = JSON.parse(readFileSync(file, "utf8"));
  if (!validate(document)) throw new Error(`${file}: ${JSON.stringify(validate.errors.slice(0, 3))}`);
  const { frames } = document.shared;
  const [times, growth] = document.profiles;
  const [{ grown }] = rows(trace, `select sum(max(own_memory, 0)) as grown from nodes
    where kind in ('request', 'call', 'include', 'write')`);
  const spans = checkProfile(trace, frames, times, "nanoseconds", request(trace).total_ns, "own_ns");
  same("spans of both", checkProfile(trace, frames, growth, "bytes", grown, "max(own_memory, 0)"), spans);
  const functions = checkPlaces(trace, frames);
  passed("speedscope schema", trace, `${spans} spans, time and growth of ${functions} functions`);
}
