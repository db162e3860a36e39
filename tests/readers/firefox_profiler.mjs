// SPDX-License-Identifier: MIT
// The command line of Firefox Profiler opens the Chrome trace and lists every span with its begin and its
// length, which have to be those of the table nodes.
import { execFileSync } from "node:child_process";
import { createRequire } from "node:module";
import { join } from "node:path";
import { exported, folder, passed, rows, same, sameSums, stem, sums, traces } from "./cttool.mjs";

const program = createRequire(import.meta.url).resolve("@firefox-devtools/profiler-cli");
process.env.PROFILER_CLI_SESSION_DIR = join(folder, "sessions");

function profiler(...options) {
  const settings = { encoding: "utf8", maxBuffer: 2 ** 30, stdio: ["ignore", "pipe", "inherit"] };
  return execFileSync(process.execPath, [program, ...options, "--session", "readers"], settings);
}

function markersOf(file) {
  profiler("load", file);
  try {
    const { threads } = JSON.parse(profiler("thread", "list", "--json"));
    same(`threads of ${file}`, threads.length, 1);
    const list = profiler("thread", "markers", "--list", "--limit", "0", "--json");
    return JSON.parse(list).flatMarkers;
  } finally {
    execFileSync(process.execPath, [program, "stop", "readers"], { stdio: "ignore" });
  }
}

const nanoseconds = (milliseconds) => Math.round(milliseconds * 1e6);

// What took no time is an instant, and is named by what happened. Equal ones may come in any order, so they
// are counted.
const counted = (markers) => sums(markers.map(({ name, start, length }) =>
  [length > 0 ? `${name} at ${start} for ${length} ns` : `an instant at ${start} ns`, { markers: 1 }]));

for (const trace of traces) {
  const file = exported(trace, "chrome", `${stem(trace)}.trace.json.gz`, "--gzip");
  const markers = markersOf(file).map(({ name, start, duration }) =>
    ({ name, start: nanoseconds(start), length: duration === undefined ? 0 : nanoseconds(duration) }));
  const nodes = rows(trace, `select n.start_ns as start, n.total_ns as length,
      coalesce(c.name, 'include ' || i.path, n.kind) as name
    from nodes n left join calls c on c.id = n.id left join includes i on i.id = n.id`);
  sameSums("slices and instants", counted(markers), counted(nodes));
  const slices = nodes.filter(({ length }) => length > 0).length;
  passed("Firefox Profiler", trace, `${slices} slices with begin and length, ${nodes.length - slices} instants`);
}
