#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What cttool summary says, worked out once more from the JSON document of the reader.

summary_test.py CODETRACE CTTOOL MAKE_RANDOM_TRACES TRACE...: the figures of each trace; of them, of
50 random ones, and of damaged copies also that the text fits a page.
"""
import collections
import json
import pathlib
import random
import subprocess
import sys
import tempfile
import unicodedata

from document import SPANS, names_of, output

LINES, COLUMNS = 60, 80
QUERIES = {"PDO::query", "PDO::exec", "PDO::prepare", "PDOStatement::execute"}


def check_page(cttool, path):
    """The text is a page, without control characters, and names no section twice."""
    text = output(cttool, "summary", path).decode("utf-8")
    lines = text.split("\n")
    assert lines.pop() == "" and 5 <= len(lines) <= LINES, (path, len(lines))
    assert all(len(line) <= COLUMNS for line in lines), (path, max(lines, key=len))
    assert not any(unicodedata.category(c) == "Cc" for line in lines for c in line), path
    titles = [line.split(":")[0] for before, line in zip(lines, lines[1:]) if not before]
    assert len(titles) == len(set(titles)), (path, titles)
    # Without limits all of that is there, and places that had no room.
    whole = "\n" + output(cttool, "summary", path, "--full").decode("utf-8")
    assert all("\n" + line in whole for line in lines if "…" not in line), path
    return text


def thrown_handle(node):
    exception = node.get("exception")
    return exception["handle"] if isinstance(exception, dict) and "handle" in exception else None


def check_exceptions(document, said):
    """Each node that threw stands in one pass, below a node that threw the same or caught it."""
    threw = {node["id"]: thrown_handle(node) for node in document["cp"]
             if thrown_handle(node) is not None}
    parents = {node["id"]: node.get("parent_id") for node in document["cp"]}
    passed = []
    for exception in said["exceptions"]:
        for one in exception["passes"]:
            calls = one["calls"]
            passed += calls
            assert all(parents[a] == b for a, b in zip(calls, calls[1:])), one
            assert all(threw[call] == exception["handle"] for call in calls), one
            above = parents[calls[-1]]
            assert one["caught_in"] == (above or None), one
    assert sorted(passed) == sorted(threw), (len(passed), len(threw))
    assert len(said["exceptions"]) == said["request"]["thrown"]


def result_of(node):
    """What a call came to, and of which kind that is."""
    if node.get("incomplete"):
        return "unknown", None
    key = "exception" if "exception" in node else "return"
    value = node.get(key)
    if key == "return" and value is None:
        return "none", None
    is_handle = key == "return" and isinstance(value, dict) and "handle" in value
    return "handle" if is_handle else "same", json.dumps([key, value])


def results_of(nodes):
    found = [result_of(node) for node in nodes]
    if any(kind == "unknown" for kind, _ in found):
        return {"unknown", "differ"}
    if len(set(found)) != 1:
        return {"differ"}
    # Values that differ may look alike in the document, and a double that is not finite like null.
    return {found[0][0], "differ", *(["same"] if found[0][0] == "none" else [])}


def check_repeats(document, total, said):
    """Calls of one function on one object with equal arguments."""
    groups = collections.defaultdict(list)
    for node in document["cp"]:
        if "function" in node:
            key = json.dumps([node["function"], node.get("this"), node.get("args")])
            groups[key].append(node["id"])
    expected = {ids[0]: (len(ids), sum(total[i] for i in ids), max(total[i] for i in ids))
                for ids in groups.values() if len(ids) > 1}
    found = {row["first"]: (row["calls"], row["total_ns"], row["slowest_ns"])
             for row in said["repeats"]}
    ranks = []
    for row in said["repeats"]:
        assert row["spare_ns"] == row["total_ns"] - row["slowest_ns"], row
        ranks.append((row["results"] == "differ", -row["spare_ns"], row["first"]))
        if found[row["first"]] == expected.get(row["first"]):
            ids = next(ids for ids in groups.values() if ids[0] == row["first"])
            assert row["results"] in results_of([document["cp"][i] for i in ids]), row
    assert ranks == sorted(ranks)
    # Values that differ may look alike in the document, so some of its groups may be parted.
    odd = {first for first in expected if expected[first] != found.get(first)}
    assert len(odd) * 50 <= len(expected), (len(odd), len(expected))
    assert sum(row[0] for row in found.values()) <= sum(row[0] for row in expected.values())


def check_queries(document, names, said):
    """Calls of PDO, which is what the traces have; texts are arguments of theirs."""
    expected = [node for node in document["cp"]
                if "function" in node and names[node["function"]] in QUERIES]
    calls = said["sql"]["calls"]
    assert [node["id"] for node in expected] == [call["id"] for call in calls]
    for node, call in zip(expected, calls):
        if call["prepared_by"] is None and call["text"] is not None:
            first = node["args"][0]
            assert call["text"].startswith(first if isinstance(first, str) else first["string"])
    assert sum(row["calls"] for row in said["sql"]["statements"]) == len(calls)
    return len(calls)


def check_areas(cttool, path, said):
    """The areas say what the profile says."""
    areas = {row["name"]: row["own_ns"] for row in said["areas"]["rows"]}
    assert sum(areas.values()) == said["request"]["total_ns"], path
    top = ("top", path, "--format", "json", "--limit", "0")
    profile = json.loads(output(cttool, *top, "--user", "--of", said["areas"]["by"]))
    rows = {row["name"]: row["own_ns"] for row in profile["rows"]}
    elsewhere = profile["elsewhere"]
    for name, own in (("(includes: compiling, top-level code)", elsewhere["includes_ns"]),
                      ("(output)", elsewhere["output_ns"]),
                      ("(PHP outside of scripts)", elsewhere["request_ns"]),
                      ("(built-in functions)", elsewhere["other_calls_ns"])):
        assert areas.pop(name, 0) == own, (path, name)
    assert sum(areas.values()) == sum(rows.values()), path
    for name, own in areas.items():
        if "..." not in name:
            assert rows[name] == own, (path, name)
    assert sum(row["own_ns"] for row in said["includes"]) == elsewhere["includes_ns"], path


def check_way(document, total, said):
    """Always into the child that took the most."""
    children = collections.defaultdict(list)
    for node in document["cp"]:
        children[node.get("parent_id")].append(node["id"])
    way = [0]
    while True:
        slow = [child for child in children[way[-1]] if total[child] > 0]
        if not slow:
            break
        way.append(max(slow, key=lambda child: (total[child], -child)))
    assert [step["id"] for step in said["slowest_way"]] == way


def check_figures(codetrace, cttool, path):
    """A trace whose times are good. Returns how many queries it has."""
    document = json.loads(output(codetrace, "-J", path))
    said = json.loads(output(cttool, "summary", path, "--format", "json"))
    nodes = document["cp"]
    names, _ = names_of(document)
    total = [round(node.get("ms_delta", 0) * 1e6) if node["name"] in SPANS else 0
             for node in nodes]
    request = said["request"]
    assert request["total_ns"] == total[0] and request["nodes"] == len(nodes)
    assert request["calls"] == sum("function" in node for node in nodes)
    assert request["open"] == sum("incomplete" in node for node in nodes) == len(said["open"])
    errors = [node for node in nodes if node["name"] == "SCRIPT_ERROR"]
    assert request["errors"] == len(errors) == sum(row["count"] for row in said["errors"])
    for row in said["errors"]:
        node = nodes[row["first"]]
        assert (node["error_num"], node.get("line_no")) == (row["number"], row["line"])
    check_areas(cttool, path, said)
    includes = [node for node in nodes if node["name"] == "INCLUDE_CALL"]
    assert sum(row["times"] for row in said["includes"]) == len(includes), path
    assert sum(row["calls"] for row in said["areas"]["rows"]) == request["calls"], path
    assert sum(row["calls"] for row in said["functions"]) == request["calls"], path
    check_exceptions(document, said)
    check_repeats(document, total, said)
    check_way(document, total, said)
    return check_queries(document, names, said)


def damaged(bytes_of, chance):
    """A copy with other bits or other bytes in places behind the header."""
    copy = bytearray(bytes_of)
    for _ in range(20):
        place = chance.randrange(36, len(copy)) if len(copy) > 36 else 0
        if chance.random() < 0.5:
            copy[place] ^= 1 << chance.randrange(8)
        else:
            copy[place] = chance.randrange(256)
    return bytes(copy)


def check_several(cttool, traces, folder):
    """A line each; one that cannot be read does not end the run."""
    bad = pathlib.Path(folder) / "no trace.ct"
    bad.write_bytes(b"nothing")
    for form, wanted in ((), len(traces) + 1), (("--format", "json"), len(traces)):
        run = subprocess.run([cttool, "summary", traces[0], str(bad), *traces[1:], *form],
                             stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
        assert run.returncode == 2 and b"no trace.ct" in run.stderr, run
        lines = run.stdout.decode("utf-8").splitlines()
        assert len(lines) == wanted, lines
        if form:
            assert [json.loads(line)["trace"] for line in lines] == traces


def main():
    codetrace, cttool, make_random, *traces = sys.argv[1:]
    queries = 0
    for path in traces:
        queries += check_figures(codetrace, cttool, path)
        check_page(cttool, path)
    chance = random.Random(4)
    pages = 0
    with tempfile.TemporaryDirectory() as folder:
        check_several(cttool, traces, folder)
        made = pathlib.Path(folder) / "made"
        subprocess.run([make_random, made, "50", "9"], check=True)
        paths = sorted(made.iterdir())
        assert len(paths) == 50
        small = [path for path in map(pathlib.Path, traces) if path.stat().st_size < 1_000_000]
        target = pathlib.Path(folder) / "damaged.ct"
        for path in paths + 4 * small:
            target.write_bytes(damaged(path.read_bytes(), chance))
            for trace in (str(path), str(target)):
                reader, status = (subprocess.run([*command, trace], stdout=subprocess.DEVNULL,
                                                 stderr=subprocess.DEVNULL, check=False).returncode
                                  for command in ([codetrace, "-S"], [cttool, "summary"]))
                assert (reader, status) in ((0, 0), (1, 2)), (path, reader, status)
                if status == 0:
                    check_page(cttool, trace)
                    json.loads(output(cttool, "summary", trace, "--format", "json"))
                    pages += 1
    assert pages > 60
    print(f"{len(traces)} traces, {queries} queries, {pages} wild ones")


if __name__ == "__main__":
    main()
