// SPDX-License-Identifier: MIT
// DuckDB reads the JSON lines and the CSV, groups them as `cttool top` does, and writes Parquet that
// hyparquet reads back. Of the JSON lines it has to look at all before it chooses columns: some keys come late.
import { DuckDBInstance } from "@duckdb/node-api";
import { asyncBufferFromFile, parquetReadObjects } from "hyparquet";
import { join } from "node:path";
import { exported, folder, passed, profile, same, sameSums, stem, sums, traces } from "./cttool.mjs";

const database = await (await DuckDBInstance.create(":memory:")).connect();
const quoted = (text) => `'${text.replaceAll("'", "''")}'`;

const byName = (records) => sums(records.map(({ name, calls, own_ns }) =>
  [name, { calls: Number(calls), own_ns: Number(own_ns) }]));

async function checkFormat(trace, what, table) {
  const wanted = byName(profile(trace));
  const grouped = await database.runAndReadAll(
    `select name, count(*) as calls, sum(own_ns)::bigint as own_ns from ${table} group by name`);
  sameSums(`own time in ${what}`, byName(grouped.getRowObjectsJS()), wanted);

  const parquet = join(folder, `${stem(trace)}.${what}.parquet`);
  await database.run(`copy (select name, 1 as calls, own_ns::bigint as own_ns from ${table})
    to ${quoted(parquet)} (format parquet)`);
  const read = await parquetReadObjects({ file: await asyncBufferFromFile(parquet) });
  sameSums(`own time in Parquet of ${what}`, byName(read), wanted);
  const everything = join(folder, "everything.parquet");
  await database.run(`copy (select * from ${table}) to ${quoted(everything)} (format parquet)`);
  const all = await parquetReadObjects({ file: await asyncBufferFromFile(everything) });
  same(`records in Parquet of ${what}`, all.length, read.length);
  passed(`DuckDB, hyparquet: ${what}`, trace, `${read.length} calls, ${wanted.size} functions as in top`);
}

for (const trace of traces) {
  const jsonl = exported(trace, "jsonl", `${stem(trace)}.jsonl`);
  await checkFormat(trace, "jsonl",
    `(select * from read_json(${quoted(jsonl)}, format = 'newline_delimited', sample_size = -1) where kind = 'call')`);
  const csv = exported(trace, "csv", `${stem(trace)}.csv`);
  await checkFormat(trace, "csv", `read_csv(${quoted(csv)}, strict_mode = true)`);
}
