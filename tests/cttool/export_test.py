#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What cttool export writes, read by plain readers of each format: it is well-formed and balanced,
tells of the nodes that were asked for and of no others, and its figures are those of the tables and
of cttool top, to the nanosecond.

export_test.py CODETRACE CTTOOL MAKE_RANDOM_TRACES CORPUS TRACE...: each trace, 50 random ones in both
byte orders, whose times are wild, and the damaged ones of a folder.
"""
import collections
import csv
import io
import itertools
import json
import pathlib
import re
import sqlite3
import subprocess
import sys
import tempfile

import export_formats
from export_formats import MOST, OPEN
from figures_test import output

SPANS = {"request", "call", "include", "write"}
TABLES = ["request", "nodes", "calls", "functions", "classes", "includes", "writes", "headers",
          "sent", "errors", "events", "repeats"]
FILTERS = [["--depth", "3"], ["--min", "1%"], ["--hide", "/e/"], ["--no-builtin"],
           ["--only", "/t/", "--depth", "6"], ["--under", "1", "--no-builtin"],
           ["--hide", "*", "--min", "1us"]]


def export(cttool, path, name, *options):
    return output(cttool, "export", path, "--to", name, *options)


def escaped(name, semicolon=";"):
    """A name as formats of lines have it."""
    def shown(match):
        known = {"\n": "\\n", "\r": "\\r", "\t": "\\t", "\u2028": "\\u2028", "\u2029": "\\u2029"}
        return known.get(match[0], f"\\x{ord(match[0]):02x}")
    name = re.sub(r"[\x00-\x1f\x7f-\x9f\u2028\u2029]", shown, name)
    return name.replace(";", semicolon)


class Truth:
    """What the tables say of a trace."""

    def __init__(self, cttool, path):
        self.tables = {}
        for table in TABLES:
            result = json.loads(output(cttool, "sql", path, "--format", "json",
                                       f"select * from {table}"))["results"][0]
            self.tables[table] = result
        self.nodes = [dict(zip(self.tables["nodes"]["columns"], row))
                      for row in self.tables["nodes"]["rows"]]
        self.calls = {row[0]: dict(zip(self.tables["calls"]["columns"], row))
                      for row in self.tables["calls"]["rows"]}
        self.paths = {row[0]: dict(zip(self.tables["includes"]["columns"], row))["path"]
                      for row in self.tables["includes"]["rows"]}
        self.functions = {row["name"]: row for row in self.top(cttool, path)}
        self.rows = self.top(cttool, path)

    @staticmethod
    def top(cttool, path):
        return json.loads(output(cttool, "top", path, "--limit", "0", "--format", "json"))["rows"]

    def name(self, node):
        """What a span is called where functions have names and calls have none."""
        if node["kind"] == "call":
            name = self.calls[node["id"]]["name"]
            return name if name.strip(" ") else "(no name)"
        return f'include {(self.paths[node["id"]] or "").strip(" ") and self.paths[node["id"]]}' if node["kind"] == "include" else node["kind"]


class Chosen:
    """The nodes of an export, and what they come to among themselves."""

    def __init__(self, truth, ids=None):
        self.truth = truth
        self.nodes = [node for node in truth.nodes if ids is None or node["id"] in ids]
        self.spans = [node for node in self.nodes if node["kind"] in SPANS]
        within = {node["id"]: None for node in self.spans}
        around = {}  # the next chosen span around each node
        for node in truth.nodes:
            above = node["parent"]
            around[node["id"]] = (above if above in within else
                                  None if above is None else around[above])
        self.own = {node["id"]: node["total_ns"] for node in self.spans}
        delta = {node["id"]: node["memory_delta"] or 0 for node in self.spans}
        memory = dict(delta)
        for node in self.spans:
            above = around[node["id"]]
            if above is not None:
                self.own[above] -= node["total_ns"]
                memory[above] -= delta[node["id"]]
        assert min(self.own.values(), default=0) >= 0
        # Differences wrap, as those of the file do.
        self.growth = {node["id"]: max(0, (memory[node["id"]] + 2**63) % 2**64 - 2**63)
                       if node["memory_delta"] is not None else 0 for node in self.spans}
        self.roots = [node for node in self.spans if around[node["id"]] is None]
        self.total = sum(node["total_ns"] for node in self.roots)
        self.around = around

    def sums(self, of):
        """Own time, growth and calls by the name that `of` gives a span."""
        found = collections.defaultdict(lambda: [0, 0, 0])
        for node in self.spans:
            export_formats.Callgrind.add(
                found[of(node)],
                [self.own[node["id"]], self.growth[node["id"]], int(node["kind"] == "call")])
        return found


def check_speedscope(chosen, data):
    said = export_formats.Speedscope(data)
    wanted = [(node["start_ns"], node["start_ns"] + node["total_ns"]) for node in chosen.spans]
    assert [(begin, end) for _, begin, end in said.times] == wanted
    assert len(said.memory) == len(wanted)
    for node, (frame, _, _), (same_frame, *_) in zip(chosen.spans, said.times, said.memory):
        assert frame == same_frame
        name = chosen.truth.name(node) + (OPEN if node["outcome"] == "open" else "")
        assert said.frames[frame]["name"] == name, (said.frames[frame], name)
    growth = 0
    for value in chosen.growth.values():
        growth = min(MOST, growth + value)
    assert said.document["profiles"][1]["endValue"] == growth
    return said


def check_chrome(chosen, data):
    said = export_formats.Chrome(data)
    assert sorted(said.nodes) == [node["id"] for node in chosen.nodes]
    for node in chosen.nodes:
        begin, end, args = said.nodes[node["id"]]
        assert begin == node["start_ns"] and end == begin + (node["total_ns"] or 0), (node, args)
        assert args.get("open", False) == (node["outcome"] == "open"), (node, args)
        marks = (node["marks"] or "").split()
        assert args.get("untimed", False) == ("untimed" in marks), (node, args)
        assert args.get("moved", False) == ("moved" in marks), (node, args)
        if node["kind"] in SPANS:
            assert said.names[node["id"]] == chosen.truth.name(node), (node, args)
            assert args.get("memory_delta") == export_formats.exact(node["memory_delta"])
    return said


def check_values(truth, row):
    """The values of a call, as its row of the table has them."""
    call = truth.calls[row["id"]]
    for key in ("this", "args", "returned", "thrown"):
        if key in row:
            # The table has no value of what ended a call though it is the end of an include.
            is_odd = key == "thrown" and call[key] is None
            assert is_odd or row[key] == export_formats.exact(call[key]), (row, call)
        else:
            assert call[key] is None, (row, call)


def check_jsonl(chosen, data):
    first, rows = export_formats.jsonl(data)
    assert first["nodes"] == len(chosen.truth.nodes)
    assert [row["id"] for row in rows] == [node["id"] for node in chosen.nodes]
    for node, row in zip(chosen.nodes, rows):
        for key in ("parent", "depth", "kind", "start_ns", "total_ns", "own_ns", "memory_delta",
                    "own_memory", "file", "line", "outcome"):
            wanted = export_formats.exact(node[key])
            assert row[key] == wanted, (key, node, row)
        # The tables have what is beyond 63 bits as a real number.
        assert row["memory"] is None if node["memory"] is None else \
            float(row["memory"]) == float(node["memory"]), (node, row)
        marks = {mark.removeprefix("end_") for mark in row["marks"]}
        assert marks == set((node["marks"] or "").split()), (node, row)
        if node["kind"] == "call":
            assert row["name"] == chosen.truth.calls[row["id"]]["name"]
            check_values(chosen.truth, row)
    return first, rows


def check_folded(cttool, path, chosen, *options):
    for weight, figure in (("own", 0), ("memory", 1), ("calls", 2)):
        said = export_formats.folded(export(cttool, path, "folded", "--weight", weight, *options))
        wanted = collections.Counter()
        stacks = {None: ()}
        for node in chosen.spans:
            name = escaped(chosen.truth.name(node), ":")
            name += OPEN if node["outcome"] == "open" else ""
            stacks[node["id"]] = stacks[chosen.around[node["id"]]] + (name,)
            weights = (chosen.own[node["id"]], chosen.growth[node["id"]],
                       int(node["kind"] == "call"))
            wanted[stacks[node["id"]]] += weights[figure]
        wanted = +wanted
        assert said.keys() == wanted.keys(), (path, weight)
        assert all(said[stack] == min(MOST, wanted[stack]) for stack in said), (path, weight)
        if weight == "own":
            assert sum(said.values()) == chosen.total, (path, options)


def plain_name(name):
    """Without what tells functions of one name, recursions and turns of a cycle apart."""
    return re.sub(r"(:\d+)?('\d+(\.\d+)?)?$", "", name)


def check_callgrind(chosen, data):
    """Own costs by name, whatever the level of recursion; the graph has neither cycles nor costs from
    nowhere. Functions of one name in one file have the line behind it."""
    said = export_formats.Callgrind(data)
    by_name = collections.defaultdict(lambda: [0, 0, 0])
    totals = [0, 0, 0]
    for (name, _), costs in said.own.items():
        export_formats.Callgrind.add(by_name[plain_name(name)], costs)
        export_formats.Callgrind.add(totals, costs)
    assert totals == said.summary and said.summary[0] == chosen.total
    wanted = chosen.sums(lambda node: plain_name(escaped(chosen.truth.name(node))))
    assert {name: list(costs) for name, costs in by_name.items()} == dict(wanted)
    inclusive = said.inclusive()
    arcs = collections.defaultdict(lambda: [0, 0, 0])
    for (_, callee), costs in said.arcs.items():
        export_formats.Callgrind.add(arcs[callee], costs)
    roots = {plain_name(escaped(chosen.truth.name(node))) for node in chosen.roots}
    for (name, file), costs in inclusive.items():
        if plain_name(name) not in roots and MOST not in costs:
            assert costs == arcs[name, file], (name, costs, arcs[name, file])
    return said, inclusive


def check_top(truth, said, inclusive):
    """Calls, own and total time of each function are those of cttool top."""
    for row in truth.rows:
        file = (escaped(row["file"]) if row["file"] else
                "php:internal" if row["builtin"] else "(no file)")
        name = escaped(row["name"])
        same = [other for other in truth.rows
                if (other["name"], other["file"]) == (row["name"], row["file"])]
        if len({other["line"] for other in same}) != len(same):
            continue
        if len(same) > 1:
            name += f':{row["line"] or 0}'
        levels = [key for key in said.own
                  if key[1] == file and (key[0] == name or key[0].startswith(name + "'"))]
        own = [sum(said.own[key][i] for key in levels) for i in range(3)]
        assert (own[0], own[2]) == (row["own_ns"], row["calls"]), (row, own)
        outermost = [key for key in levels if key[0] == name or key[0].startswith(name + "'1.")]
        total = sum(inclusive[key][0] for key in outermost)
        assert total == row["total_ns"], (row, total)


def check_csv(cttool, path, truth):
    for table in TABLES:
        rows = list(csv.reader(io.StringIO(export(cttool, path, "csv", "--table", table).decode(),
                                           newline="")))
        result = truth.tables[table]
        assert rows[0] == result["columns"], (path, table)
        assert len(rows) == len(result["rows"]) + 1, (path, table)
        for said, wanted in zip(rows[1:], result["rows"]):
            for text, value in zip(said, wanted):
                same = text == "" if value is None else text == value
                assert same or json.loads(text) == value, (path, table, text, value)
    none = export(cttool, path, "csv", "--values", "none").split(b"\n")[0]
    assert b"own_ns" in none and b"args" not in none


def check_sqlite(cttool, path, truth, folder):
    name = pathlib.Path(folder) / "out.sqlite"
    output(cttool, "export", path, "--to", "sqlite", "-o", str(name))
    assert name.read_bytes() == export(cttool, path, "sqlite"), path
    database = sqlite3.connect(f"file:{name}?mode=ro", uri=True)
    assert database.execute("pragma integrity_check").fetchall() == [("ok",)]
    assert database.execute("pragma user_version").fetchone() == (1,)
    for table in TABLES:
        said = database.execute(f"select * from {table}")
        result = truth.tables[table]
        assert [column[0] for column in said.description] == result["columns"]
        types = [row[2] for row in database.execute(f"pragma table_info({table})")]
        for row, wanted in zip(said, result["rows"], strict=True):
            plain = [json.loads(value) if kind == "JSON TEXT" and value is not None else value
                     for kind, value in zip(types, row)]
            # The document writes a real number beyond 63 bits like a whole one.
            wanted = [float(value) if isinstance(real, float) and value is not None else value
                      for real, value in zip(plain, wanted)]
            assert plain == wanted, (path, table, plain, wanted)
    views = [row[0] for row in database.execute("select name from sqlite_master where type = 'view'")]
    assert len(views) == 13, views
    for view in views:
        database.execute(f"select * from {view} limit 5").fetchall()
    for of in (0, len(truth.nodes) // 2):
        around = database.execute('select id from ancestors where "of" = ? order by id', (of,))
        wanted = json.loads(output(cttool, "sql", path, "--format", "json",
                                   f"select id from ancestors({of}) order by id"))
        assert [list(row) for row in around] == wanted["results"][0]["rows"], (path, of)
    database.close()
    for options in ([], ["--no-builtin"]):
        output(cttool, "export", path, "--to", "sqlite", "-o", str(name), "--table", "nodes", *options)
        database = sqlite3.connect(f"file:{name}?mode=ro", uri=True)
        said = database.execute("select value, (select count(*) from nodes) from export where name = 'left_out'")
        assert sum(said.fetchone()) == len(truth.nodes), (path, options)
        database.close()
    name.unlink()


def check_all(cttool, path, truth, chosen, *options):
    check_speedscope(chosen, export(cttool, path, "speedscope", *options))
    check_chrome(chosen, export(cttool, path, "chrome", *options))
    check_jsonl(chosen, export(cttool, path, "jsonl", *options))
    check_folded(cttool, path, chosen, *options)
    return check_callgrind(chosen, export(cttool, path, "callgrind", *options))


def check_filters(cttool, path, truth, filters):
    """The nodes of an export are those that cttool tree has lines for, if it folds none."""
    for options in filters:
        said = output(cttool, "tree", path, "--fold", "none", "--format", "json", *options)
        ids = {fold["id"] for fold in json.loads(said)["folds"]} if said else set()
        if not ids:
            assert not export(cttool, path, "jsonl", *options), (path, options)
            continue
        chosen = Chosen(truth, ids)
        check_all(cttool, path, truth, chosen, *options)
        rows = list(csv.DictReader(io.StringIO(
            export(cttool, path, "csv", "--table", "nodes", *options).decode(), newline="")))
        assert [int(row["id"]) for row in rows] == sorted(ids), (path, options)


def check(cttool, path, folder, is_true, filters):
    truth = Truth(cttool, path)
    chosen = Chosen(truth)
    said, inclusive = check_all(cttool, path, truth, chosen)
    if is_true:
        check_top(truth, said, inclusive)
    check_csv(cttool, path, truth)
    check_sqlite(cttool, path, truth, folder)
    if truth.nodes:
        check_filters(cttool, path, truth, filters)
    export_formats.Chrome(export(cttool, path, "chrome", "--values", "short"))
    export_formats.jsonl(export(cttool, path, "jsonl", "--values", "short"))
    _, rows = export_formats.jsonl(export(cttool, path, "jsonl", "--values", "none"))
    assert not any(key in row for row in rows for key in ("args", "returned", "thrown", "body"))


def node_count(codetrace, path):
    """How many nodes there are; nothing for a file that is refused."""
    run = subprocess.run([codetrace, "-J", path], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                         check=False)
    return len(json.loads(run.stdout)["cp"]) if run.returncode == 0 else None


def main():
    codetrace, cttool, make_random, corpus, *traces = sys.argv[1:]
    turns = itertools.cycle(FILTERS)
    with tempfile.TemporaryDirectory() as folder:
        for path in traces:
            is_small = pathlib.Path(path).stat().st_size < 1 << 20
            check(cttool, path, folder, True, FILTERS if is_small else [next(turns)])
        made = pathlib.Path(folder) / "random"
        made.mkdir()
        subprocess.run([make_random, str(made), "50", "23"], check=True)
        paths = sorted(map(str, made.iterdir()))
        paths = [path for path in paths if node_count(codetrace, path) is not None]
        assert len(paths) >= 40, paths
        for path in paths:
            check(cttool, path, folder, False, [next(turns), next(turns)])
        damaged = 0
        for path in sorted(map(str, pathlib.Path(corpus).iterdir())):
            if damaged < 30 and (node_count(codetrace, path) or 0) > 3:
                check(cttool, path, folder, False, [next(turns)])
                damaged += 1
        assert damaged >= 10, damaged
    print(f"{len(traces)} traces, {len(paths)} random ones and {damaged} damaged ones")


if __name__ == "__main__":
    main()
