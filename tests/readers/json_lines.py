#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""json_lines.py CTTOOL TRACE...: jq reads every record and adds up to the profile of `cttool top`; the
values of calls are those of SQL."""
import json
import pathlib
import subprocess
import sys
import tempfile

SUMS = """reduce (inputs | select(.kind == "call")) as $call ({};
  .[$call.name] |= [.[0] + 1, .[1] + $call.own_ns])"""
VALUES = ("this", "args", "returned", "thrown")


def output(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout.decode()


def compare(what, got, wanted):
    if not wanted or got != wanted:
        sys.exit(f"{what}: {str(got)[:300]} instead of {str(wanted)[:300]}")


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
    compare("first record", output("jq", "-n", "-r", "input.schema", path), "cttool.export.jsonl/1\n")
    compare("records", output("jq", "-c", ".", path).count("\n"), request["nodes"] + 1)
    sums = profile(tool, trace)
    compare("own time by jq", json.loads(output("jq", "-n", "-c", SUMS, path)), sums)
    calls = check_values(tool, trace, path)
    compare("calls", calls, request["calls"])
    print(f"ok  {'jq -c':24} {pathlib.Path(trace).name:16} {request['nodes'] + 1} records, {len(sums)} functions "
          f"as in top, values of {calls} calls as in SQL", flush=True)


def main():
    with tempfile.TemporaryDirectory() as folder:
        for trace in sys.argv[2:]:
            check(sys.argv[1], trace, pathlib.Path(folder))


if __name__ == "__main__":
    main()
