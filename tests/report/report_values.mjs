// SPDX-License-Identifier: MIT
// The page's own reader of values, on every node of a trace: what it makes of the few bytes that most calls have
// is what `cttool export` says.
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { join } from "node:path";
import { fileURLToPath } from "node:url";
import { inflateSync } from "node:zlib";
import { folder, passed, run, same, stem, tool, traces } from "./cttool.mjs";
import { nodesWithValues } from "./report_nodes.mjs";

const web = fileURLToPath(new URL("../../web/", import.meta.url));
const { buildSync } = createRequire(join(web, "package.json"))("esbuild");
const built = buildSync({ entryPoints: [join(web, "src/call_values.ts")], bundle: true, format: "esm", write: false });
const { endOfEntry, lineOf } = await import(`data:text/javascript;base64,${Buffer.from(built.outputFiles[0].contents).toString("base64")}`);

function unpackedBlocks(file) {
  const found = readFileSync(file, "latin1").matchAll(/id="(meta|classes|values-\d+)">([^<]*)</g);
  return new Map(Array.from(found, ([, name, data]) => [name, new Uint8Array(inflateSync(Buffer.from(data, "base64")))]));
}

function linesOf(blocks) {
  const [meta, names] = ["meta", "classes"].map((name) => JSON.parse(Buffer.from(blocks.get(name)).toString()));
  const classes = names.map((name) => JSON.stringify(name));
  return meta.blocks.flatMap((count, number) => {
    const bytes = blocks.get(`values-${number}`);
    const block = { bytes, starts: new Int32Array(count + 1) };
    for (let i = 0; i < count; ++i) block.starts[i + 1] = endOfEntry(bytes, block.starts[i]);
    same("the end of the last entry", block.starts[count], bytes.length);
    return Array.from({ length: count }, (_, entry) => lineOf(block, entry, classes));
  });
}

for (const trace of traces) {
  const file = join(folder, `${stem(trace)}.html`);
  run(tool, "report", trace, "-o", file, "--max-size", "1G");
  const lines = linesOf(unpackedBlocks(file));
  const wanted = nodesWithValues(trace);
  for (const [i, { id, values }] of wanted.entries()) same(`values of ${id}`, JSON.parse(lines[i] ?? "null"), values);
  same("entries", lines.length, wanted.length);
  passed("values", trace, `${lines.length} nodes`);
}
