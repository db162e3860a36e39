#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What cttool sql says of a trace, worked out once more from the JSON document of the reader.

sql_figures_test.py CODETRACE CTTOOL MAKE_RANDOM_TRACES TRACE...: the rows and sums of each trace; of 50
random ones as well, but for their times, which are wild.
"""
import collections
import json
import pathlib
import subprocess
import sys
import tempfile

from document import SPANS, names_of, output, plain, same

KINDS = {"STARTUP": "request", "FUNCTION_CALL": "call", "INCLUDE_CALL": "include",
         "SAPI_WRITE": "write", "SAPI_FLUSH": "flush", "SAPI_HEADER": "header",
         "SAPI_SEND_HEADERS": "send_headers", "SCRIPT_EXIT": "exit", "SCRIPT_ERROR": "error",
         "USER_EVENT": "event"}
ORDER = "little", "big"


def rows(cttool, path, query):
    """The rows of a query as lists."""
    document = json.loads(output(cttool, "sql", path, query, "--format", "json"))
    assert document["schema"] == "cttool.sql/1" and document["trace"] == path
    (result,) = document["results"]
    assert all(len(row) == len(result["columns"]) for row in result["rows"])
    return result["rows"]


def check_nodes(path, document, cttool):
    """The tree and its kinds, and counts of them."""
    nodes = document["cp"]
    depth, last = [], list(range(len(nodes)))
    for node in nodes:
        above = node.get("parent_id")
        depth.append(0 if above is None else depth[above] + 1)
    for node in reversed(nodes):
        if "parent_id" in node:
            last[node["parent_id"]] = max(last[node["parent_id"]], last[node["id"]])
    wanted = [[n["id"], n.get("parent_id"), last[n["id"]], depth[n["id"]], KINDS[n["name"]]]
              for n in nodes]
    said = rows(cttool, path, "select id, parent, last, depth, kind from nodes")
    assert said == wanted, (path, [pair for pair in zip(said, wanted) if pair[0] != pair[1]][:3])
    kinds = collections.Counter(node["name"] for node in nodes)
    tables = {"calls": "FUNCTION_CALL", "includes": "INCLUDE_CALL", "writes": "SAPI_WRITE",
              "headers": "SAPI_HEADER", "sent": "SAPI_SEND_HEADERS", "errors": "SCRIPT_ERROR",
              "events": "USER_EVENT"}
    for table, kind in tables.items():
        assert rows(cttool, path, f"select count(*) from {table}") == [[kinds[kind]]], (path, table)
    for parent in {node.get("parent_id") for node in nodes[:40]} - {None}:
        children = [[n["id"]] for n in nodes if n.get("parent_id") == parent]
        query = f"select id from nodes where parent = {parent} order by id"
        assert rows(cttool, path, query) == children, (path, parent)


def check_calls(path, document, cttool):
    """Each call with its values, and the counts of names."""
    names, classes = names_of(document)
    calls = [node for node in document["cp"] if "function" in node]
    said = rows(cttool, path, "select id, name, function, file, line, outcome = 'open', this, args, "
                "returned, thrown from calls")
    assert len(said) == len(calls), path
    for node, row in zip(calls, said):
        where = (path, node, row)
        assert row[0] == node["id"] and row[1] == names[node["function"]], where
        assert row[2] == node["function"], where
        # The document has lines with a sign.
        line = node["line_no"] & 0xFFFFFFFF if "line_no" in node else None
        assert row[3:5] == [node.get("filename") or None, line], where
        assert row[5] == int(node.get("incomplete", False)), where
        assert same(plain(node.get("this"), classes), row[6]), where
        assert same([plain(item, classes) for item in node.get("args", [])], row[7]), where
        if "return" in node:
            assert same(plain(node["return"], classes), row[8]), where
        assert same(plain(node.get("exception"), classes), row[9]), where
    counted = collections.Counter(names[node["function"]] for node in calls)
    wanted = sorted([name, count] for name, count in counted.items())
    said = rows(cttool, path, "select name, count(*) from calls group by name")
    assert sorted(said) == wanted, path
    # UTF-8 and code points have the same order.
    assert [row[0] for row in said] == [row[0] for row in wanted], path
    for name, count in list(counted.items())[:20]:
        quoted = name.replace("'", "''")
        if "\0" in name:
            continue
        query = f"select count(*) from calls where name = '{quoted}'"
        assert rows(cttool, path, query) == [[count]], (path, name)


def check_sums(path, document, cttool):
    """Own times by function: the trace's clock is sound."""
    names, _ = names_of(document)
    nodes = document["cp"]
    total = [round(node.get("ms_delta", 0) * 1e6) for node in nodes]
    own = list(total)
    for node in nodes:
        if node["name"] in SPANS and "parent_id" in node:
            own[node["parent_id"]] -= total[node["id"]]
    wanted = collections.Counter()
    for node in nodes:
        if "function" in node:
            wanted[names[node["function"]]] += own[node["id"]]
    for query in ("select name, sum(own_ns) from calls group by name",
                  "select name, sum(own_ns) from functions group by name"):
        assert dict(map(tuple, rows(cttool, path, query))) == dict(wanted), (path, query)
    whole = rows(cttool, path, "select sum(own_ns) from nodes union all "
                 "select total_ns from request")
    assert whole[0] == whole[1], (path, whole)


def check_forms(path, cttool):
    """The other forms have the same rows."""
    query = "select id, name, args from calls where id < 200"
    columns = "id", "name", "args"
    wanted = rows(cttool, path, query)
    lines = output(cttool, "sql", path, query, "--format", "jsonl").splitlines()
    assert [list(json.loads(line).values()) for line in lines] == wanted, path
    assert all(tuple(json.loads(line)) == columns for line in lines), path
    table = output(cttool, "sql", path, query).decode().splitlines()
    assert len(table) == len(wanted) + 1 and table[0].split() == list(columns), path
    table = output(cttool, "sql", path, query, "--format", "markdown").decode().splitlines()
    assert len(table) == len(wanted) + 2 and table[1] == "|---|---|---|", path


def check_exceptions(path, cttool):
    """What was thrown, as the summary says it."""
    said = json.loads(output(cttool, "summary", path, "--format", "json"))["exceptions"]
    wanted = []
    for row in said:
        ended = [call for way in row["passes"] for call in way["calls"]]
        caught_in = None if row["uncaught"] else row["passes"][-1]["caught_in"]
        wanted.append([row["class"] or None, row["handle"], row["message"], row["file"] or None, row["line"],
                       row["made_by"], ended[0], len(ended), caught_in, row["previous"]])
    assert rows(cttool, path, "select * from exceptions") == wanted, (path, wanted)
    for at, row in enumerate(wanted):
        if row[-1] is not None:
            earlier = rows(cttool, path, f"select handle from exceptions where rowid = {row[-1]}")
            assert earlier == [[said[row[-1]]["handle"]]], (path, at, row)
    return len(wanted)


def main():
    codetrace, cttool, make_random, *traces = sys.argv[1:]
    thrown = 0
    for path in traces:
        document = json.loads(output(codetrace, "-J", path))
        check_nodes(path, document, cttool)
        check_calls(path, document, cttool)
        check_sums(path, document, cttool)
        check_forms(path, cttool)
        thrown += check_exceptions(path, cttool)
    assert thrown > 5, thrown
    orders = collections.Counter()
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([make_random, folder, "50", "11"], check=True)
        paths = sorted(map(str, pathlib.Path(folder).iterdir()))
        assert len(paths) == 50, paths
        for path in paths:
            orders[ORDER[pathlib.Path(path).read_bytes()[3] >> 1 & 1]] += 1
            document = json.loads(output(codetrace, "-J", path))
            check_nodes(path, document, cttool)
            check_calls(path, document, cttool)
            check_exceptions(path, cttool)
    assert min(orders[order] for order in ORDER) > 5, orders
    print(f"{len(traces)} traces and {len(paths)} random ones")


if __name__ == "__main__":
    main()
