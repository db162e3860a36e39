#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What cttool says of a trace, worked out once more from the JSON document of the reader.

figures_test.py CODETRACE CTTOOL MAKE_RANDOM_TRACES TRACE...: the figures of each trace, and the calls
with their values of 50 random ones as well, whose times are wild and are held against each other only.
"""
import collections
import json
import pathlib
import subprocess
import sys
import tempfile

from document import SPANS, names_of, output, plain, same

# Where own time goes that is in no call.
ELSEWHERE = {"STARTUP": "request_ns", "INCLUDE_CALL": "includes_ns", "SAPI_WRITE": "output_ns"}


def check_calls(path, document, cttool):
    """Each call with its arguments and what came of it."""
    names, classes = names_of(document)
    wanted = [node for node in document["cp"] if "function" in node]
    said = [json.loads(line) for line in output(cttool, "calls", path, "--format",
                                                "jsonl").splitlines()]
    assert len(wanted) == len(said), (path, len(wanted), len(said))
    for node, call in zip(wanted, said):
        where = (path, node["id"], node, call)
        assert call["id"] == node["id"] and call["parent"] == node.get("parent_id"), where
        assert call["name"] == names[node["function"]], where
        assert (call["file"] or "") == node.get("filename", ""), where
        # The document shows lines as signed numbers.
        line = node.get("line_no")
        assert call["line"] == (None if line is None else line % 2**32), where
        assert same(plain(node.get("this"), classes), call["this"]), where
        assert same([plain(item, classes) for item in node.get("args", [])], call["args"]), where
        assert same(plain(node.get("exception"), classes), call["thrown"]), where
        if "return" in node:
            assert same(plain(node["return"], classes), call["returned"]), where
        assert (call["outcome"] == "open") == node.get("incomplete", False), where
    return said


def check_profile(path, document, cttool):
    """Own time, total time and calls of each function."""
    names, _ = names_of(document)
    nodes = document["cp"]
    total = [round(node.get("ms_delta", 0) * 1e6) for node in nodes]
    own = list(total)
    for node in nodes:
        if node["name"] in SPANS and "parent_id" in node:
            own[node["parent_id"]] -= total[node["id"]]
    rows = collections.defaultdict(lambda: [0, 0, 0])
    above = {}
    for node in nodes:
        around = above.get(node.get("parent_id"), frozenset())
        function = node.get("function")
        above[node["id"]] = around
        if function is None:
            continue
        row = rows[names[function]]
        row[0] += 1
        row[1] += own[node["id"]]
        if function not in around:
            row[2] += total[node["id"]]
            above[node["id"]] = around | {function}
    said = json.loads(output(cttool, "top", path, "--limit", "0", "--format", "json"))
    found = collections.defaultdict(lambda: [0, 0, 0])
    for row in said["rows"]:
        for place, figure in enumerate(("calls", "own_ns", "total_ns")):
            found[row["name"]][place] += row[figure]
    assert rows == found, (path, [(n, rows[n], found[n]) for n in rows if rows[n] != found[n]][:5])
    elsewhere = collections.Counter()
    for node in nodes:
        if node["name"] in SPANS and "function" not in node:
            elsewhere[ELSEWHERE[node["name"]]] += own[node["id"]]
    assert {key: ns for key, ns in said["elsewhere"].items() if ns} == +elsewhere, path
    ordered = [row["own_ns"] for row in said["rows"]]
    assert ordered == sorted(ordered, reverse=True), path


def check_sums(path, calls, cttool):
    """What is counted in two ways must agree, whatever the times are."""
    said = json.loads(output(cttool, "top", path, "--limit", "0", "--format", "json") or "null")
    if said is None:
        return
    assert sum(row["calls"] for row in said["rows"]) == len(calls), path
    assert sum(row["own_ns"] for row in said["rows"]) == sum(c["own_ns"] for c in calls), path
    for options in (), ("--user",), ("--under", "0", "--builtin"), ("--callees", "*"):
        part = json.loads(output(cttool, "top", path, "--format", "json", *options, "--limit", "0")
                          or "null")
        if part is None:
            continue
        known = sum(row["own_ns"] for row in part["rows"]) + sum(part["elsewhere"].values())
        assert known == part["whole_ns"], (path, options)
    assert all(call["total_ns"] >= call["own_ns"] >= 0 for call in calls), path
    count = output(cttool, "calls", path, "--count")
    assert int(count) == len(calls), path


def check_callers(path, document, cttool):
    """Who called the function that is called most often, and what its callers call."""
    names, _ = names_of(document)
    nodes = {node["id"]: node for node in document["cp"]}
    calls = collections.Counter()
    for node in document["cp"]:
        if "function" in node:
            parent = nodes[node["parent_id"]]
            caller = names[parent["function"]] if "function" in parent else None
            calls[caller, names[node["function"]]] += 1
    totals = collections.Counter()
    for (_, name), count in calls.items():
        totals[name] += count
    name = max(sorted(totals), key=totals.__getitem__)
    for option, wanted in (
            ("--callers", {row[0]: n for row, n in calls.items() if row[1] == name and row[0]}),
            ("--callees", {row[1]: n for row, n in calls.items() if row[0] == name})):
        said = json.loads(output(cttool, "top", path, option, name, "--limit", "0", "--format",
                                 "json"))
        counted = collections.Counter()
        for row in said["rows"]:
            counted[row["name"]] += row["calls"]
        assert wanted.items() <= counted.items(), (path, option, name)
        if option == "--callees":
            assert wanted == counted, (path, option, name)


def random_traces(make_random, codetrace, folder):
    """50 of them that can be read, in both byte orders."""
    subprocess.run([make_random, folder, "150", "7"], check=True)
    readable = [path for path in sorted(map(str, pathlib.Path(folder).iterdir()))
                if subprocess.run([codetrace, "-H", path], stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL, check=False).returncode == 0][:50]
    assert len(readable) == 50, len(readable)
    flags = [pathlib.Path(path).read_bytes()[3] & 2 for path in readable]
    assert 10 <= flags.count(2) <= 40, flags
    return readable


def main():
    codetrace, cttool, make_random, *traces = sys.argv[1:]
    for path in traces:
        document = json.loads(output(codetrace, "-J", path))
        check_sums(path, check_calls(path, document, cttool), cttool)
        check_profile(path, document, cttool)
        check_callers(path, document, cttool)
    with tempfile.TemporaryDirectory() as folder:
        paths = random_traces(make_random, codetrace, folder)
        for path in paths:
            document = json.loads(output(codetrace, "-J", path))
            check_sums(path, check_calls(path, document, cttool), cttool)
    print(f"{len(traces)} traces and {len(paths)} random ones")


if __name__ == "__main__":
    main()
