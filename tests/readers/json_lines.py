#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""json_lines.py CTTOOL TRACE...: jq reads every record, and they add up to the profile of `cttool top`; the
values of calls are those of SQL."""
import json
import sys

from companion import export, for_each_trace, output, passed, rows

# What jq is asked for of each record.
FILTER = "[.schema, .kind, .name, .own_ns]"
VALUES = ("this", "args", "returned", "thrown")


def compare(what, got, wanted):
    if not wanted or got != wanted:
        sys.exit(f"{what}: {got} instead of {wanted}")


def add(sums, name, calls, own):
    calls_before, own_before = sums.get(name, (0, 0))
    sums[name] = (calls_before + calls, own_before + own)


def profile(tool, trace):
    sums = {}
    top = "\n".join(output(tool, "top", trace, "--limit", "0", "--format", "json"))
    for row in json.loads(top)["rows"]:
        add(sums, row["name"], row["calls"], row["own_ns"])
    return sums


def check_sums(records, wanted):
    got = {}
    for _, kind, name, own in records:
        if kind == "call":
            add(got, name, 1, own)
    for name in wanted.keys() | got.keys():
        compare(f"calls and own time of {name}", got.get(name), wanted.get(name))


def check_values(tool, trace, path):
    """Every digit of them, which jq may not keep. Of how many calls."""
    query = f"select id, {', '.join(f'{name}, {name} is null as no_{name}' for name in VALUES)} from calls"
    wanted = iter(rows(tool, trace, query))
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
    path = export(tool, trace, folder / "trace.jsonl", "jsonl")
    request, = rows(tool, trace, "select * from request")
    (schema, *_), *records = map(json.loads, output("jq", "-c", FILTER, path))
    compare("schema", schema, "cttool.export/1")
    compare("records", len(records), request["nodes"])
    functions = profile(tool, trace)
    check_sums(records, functions)
    calls = check_values(tool, trace, path)
    compare("calls", calls, request["calls"])
    passed("jq -c", trace, f"{len(records)} records, {len(functions)} functions as in top, values of {calls} calls")


if __name__ == "__main__":
    for_each_trace(check)
