#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""json_lines.py CTTOOL TRACE...: jq reads every record, and they add up to the profile of `cttool top`; the
values of calls are those of SQL."""
import json
import pathlib
import subprocess
import sys
import tempfile

# What jq is asked for of each record.
FILTER = "[.schema, .kind, .name, .own_ns]"
VALUES = ("this", "args", "returned", "thrown")


def output(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout.decode()


def compare(what, got, wanted):
    if not wanted or got != wanted:
        sys.exit(f"{what}: {got} instead of {wanted}")


def compare_sums(what, got, wanted):
    for name in wanted.keys() | got.keys():
        compare(f"{what} of {name}", got.get(name), wanted.get(name))


def profile(tool, trace):
    sums = {}
    for row in json.loads(output(tool, "top", trace, "--limit", "0", "--format", "json"))["rows"]:
        calls, own = sums.get(row["name"], (0, 0))
        sums[row["name"]] = [calls + row["calls"], own + row["own_ns"]]
    return sums


def check_values(tool, trace, path):
    """Every digit of them, which jq may not keep."""
    query = f"select id, {', '.join(f'{name}, {name} is null as no_{name}' for name in VALUES)} from calls"
    # Not splitlines, which takes U+2028 for the end of a line too.
    wanted = map(json.loads, output(tool, "sql", trace, "--format", "jsonl", query).split("\n")[:-1])
    calls = 0
    with path.open(encoding="utf-8") as file:
        for record in map(json.loads, file):
            if record.get("kind") != "call":
                continue
            row = next(wanted)
            for name in VALUES:
                # A call that returned null has a result, one that never returned has none.
                if record.get(name) != row[name] or (name in record) == bool(row[f"no_{name}"]):
                    sys.exit(f"{trace}: {name} of {record['id']}: {record.get(name)} instead of {row[name]}")
            calls += 1
    return calls


def check(tool, trace, folder):
    path = folder / "trace.jsonl"
    subprocess.run([tool, "export", trace, "--to", "jsonl", "-o", path], check=True)
    request = json.loads(output(tool, "sql", trace, "--format", "jsonl", "select * from request"))
    (schema, *_), *records = map(json.loads, output("jq", "-c", FILTER, path).split("\n")[:-1])
    compare("schema", schema, "cttool.export.jsonl/1")
    compare("records", len(records), request["nodes"])
    sums = profile(tool, trace)
    got = {}
    for _, kind, name, own in records:
        if kind == "call":
            calls, before = got.get(name, (0, 0))
            got[name] = [calls + 1, before + own]
    compare_sums("calls and own time", got, sums)
    calls = check_values(tool, trace, path)
    compare("calls", calls, request["calls"])
    print(f"ok  {'jq -c':24} {pathlib.Path(trace).name:16} {len(records)} records, {len(sums)} functions "
          f"as in top, values of {calls} calls as in SQL", flush=True)


def main():
    with tempfile.TemporaryDirectory() as folder:
        for trace in sys.argv[2:]:
            check(sys.argv[1], trace, pathlib.Path(folder))


if __name__ == "__main__":
    main()
