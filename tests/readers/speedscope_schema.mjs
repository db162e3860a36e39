// SPDX-License-Identifier: MIT
// speedscope's published JSON Schema accepts the export, and its events come to the companion's figures.
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import Ajv from "ajv";
import { exported, passed, profile, request, same, sameSums, stem, sums, traces } from "./cttool.mjs";
import { spansOf } from "./speedscope_events.mjs";

const schema = createRequire(import.meta.url)("speedscope/dist/release/file-format-schema.json");
const validate = new Ajv({ strict: false }).compile(schema);

for (const trace of traces) {
  const file = exported(trace, "speedscope", `${stem(trace)}.speedscope.json`);
  const document = JSON.parse(readFileSync(file, "utf8"));
  if (!validate(document)) throw new Error(`${file}: ${JSON.stringify(validate.errors.slice(0, 3))}`);
  const { frames } = document.shared;
  const [times] = document.profiles;
  same("unit", times.unit, "nanoseconds");
  same("end", times.endValue, request(trace).total_ns);
  const spans = spansOf(times, frames);
  const wanted = sums(profile(trace).map(({ name, calls, own_ns }) => [name, { calls, own_ns }]));
  const calls = spans.filter(({ name }) => wanted.has(name));
  sameSums("own time", sums(calls.map(({ name, own }) => [name, { calls: 1, own_ns: own }])), wanted);
  passed("speedscope schema", trace, `${spans.length} spans, ${wanted.size} functions as in top`);
}
