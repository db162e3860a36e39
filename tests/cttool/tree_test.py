#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What cttool tree says of a trace: every node is in one line or in one count of what was left out,
figures add up, and folds are those that are worked out here from the JSON document of the reader.

tree_test.py CODETRACE CTTOOL MAKE_RANDOM_TRACES CORPUS TRACE...: each trace, 50 random ones, whose
times are wild and are only held against each other, and the damaged ones of a folder.
"""
import json
import pathlib
import re
import subprocess
import sys
import tempfile

from figures_test import SPANS, names_of, output

KINDS = {"STARTUP": "request", "FUNCTION_CALL": "call", "INCLUDE_CALL": "include",
         "SAPI_WRITE": "write", "SAPI_FLUSH": "flush", "SAPI_HEADER": "header",
         "SAPI_SEND_HEADERS": "send_headers", "SCRIPT_EXIT": "exit", "SCRIPT_ERROR": "error",
         "USER_EVENT": "event"}


def tree(cttool, path, *options):
    return json.loads(output(cttool, "tree", path, "--format", "json", *options))


def labels_of(document):
    """What each node is folded by: its kind, and the name of a call or of a file."""
    names, _ = names_of(document)
    return [(KINDS[node["name"]], names[node["function"]] if "function" in node
             else node.get("include")) for node in document["cp"]]


def folds_of(document):
    """The tree of folds in its order: members, each fold with that of the line above it."""
    labels = labels_of(document)
    children = [[] for _ in labels]
    for node in document["cp"]:
        if "parent_id" in node:
            children[node["parent_id"]].append(node["id"])
    found = []
    left = [([0], None)] if labels else []
    while left:
        members, parent = left.pop()
        found.append((members, parent))
        folds = []
        for child in (child for member in members for child in children[member]):
            same = [fold for fold in (folds[-1:] if len(members) == 1 else folds)
                    if labels[fold[0]] == labels[child]]
            if same:
                same[0].append(child)
            else:
                folds.append([child])
        left.extend((fold, members[0]) for fold in reversed(folds))
    return found


def times_of(document):
    """Total and own time of each node, where clocks are right."""
    total = [round(node.get("ms_delta", 0) * 1e6) for node in document["cp"]]
    own = list(total)
    for node in document["cp"]:
        if node["name"] in SPANS and "parent_id" in node:
            own[node["parent_id"]] -= total[node["id"]]
    return total, own


def check_folds(path, document, said, is_damaged=False):
    labels = labels_of(document)
    wanted = folds_of(document)
    assert len(wanted) == len(said["folds"]), (path, len(wanted), len(said["folds"]))
    depths = {None: -1}
    for (members, parent), fold in zip(wanted, said["folds"]):
        where = (path, members[:5], fold)
        assert fold["id"] == members[0] and fold["count"] == len(members), where
        assert fold["parent"] == parent, where
        assert (fold["kind"], fold["name"]) == (labels[members[0]][0],
                                                labels[members[0]][1] if fold["kind"] == "call"
                                                else None), where
        depths[fold["id"]] = depths[parent] + 1
        assert fold["depth"] == depths[fold["id"]] and fold["slowest"] in members, where
        ends = [document["cp"][member] for member in members]
        # The document does not tell of exceptions whose value is damaged, nor of those of writes.
        told = sum("exception" in node for node in ends)
        assert fold["threw"] == told or is_damaged and fold["threw"] > told, where
        assert fold["open"] == sum(node.get("incomplete", False) for node in ends), where


def check_times(path, document, said):
    total, own = times_of(document)
    for (members, _), fold in zip(folds_of(document), said["folds"]):
        where = (path, members[:5], fold)
        assert fold["total_ns"] == sum(total[member] for member in members), where
        assert fold["own_ns"] == sum(own[member] for member in members), where
        assert total[fold["slowest"]] == max(total[member] for member in members), where


def check_sums(where, said):
    """What holds for any trace and any options."""
    nodes = sum(fold["count"] for fold in said["folds"])
    cuts = [fold["left_out"] for fold in said["folds"]] + [said["left_out"]]
    nodes += sum(cut["nodes"] for cut in cuts if cut)
    assert nodes == said["nodes"], (where, nodes, said["nodes"])
    assert all(0 < cut["folds"] <= cut["nodes"] for cut in cuts if cut), where
    rest = {fold["id"]: fold["total_ns"] - fold["own_ns"] for fold in said["folds"]}
    outermost = said["total_ns"]
    for fold in said["folds"]:
        if fold["left_out"]:
            rest[fold["id"]] -= fold["left_out"]["total_ns"]
        if fold["parent"] is None:
            outermost -= fold["total_ns"]
        else:
            rest[fold["parent"]] -= fold["total_ns"]
    if said["left_out"]:
        outermost -= said["left_out"]["total_ns"]
    if said["hidden"]["nodes"]:
        assert all(time >= 0 for time in rest.values()), where
        lost = outermost + sum(rest.values())
        own = said["hidden"]["own_ns"]
        assert lost <= own if any(cuts) else lost == own, where
    else:
        assert not any(rest.values()) and outermost == 0, where


def check_text(cttool, path, nodes, *options):
    """The lines tell of every node."""
    text = output(cttool, "tree", path, "--values", "none", *options).decode()
    lines, _, notes = text.partition("\n\n")
    lines = lines.removesuffix("\n").split("\n")[1:]
    count = 0
    for line in lines:
        tail = re.search(r"  … ([\d,]+) (inside|more, [\d.]+ ms)$|^ +[\d.]+ +… ([\d,]+) more$", line)
        if tail:
            count += int((tail[1] or tail[3]).replace(",", ""))
            line = line[:tail.start()]
        times = re.search(r" × ([\d,]+)(, [\d,]+ threw)?(, [\d,]+ never ended)?$", line)
        if line:
            count += int(times[1].replace(",", "")) if times else 1
    hidden = re.search(r"… ([\d,]+) nodes are hidden", notes)
    count += int(hidden[1].replace(",", "")) if hidden else 0
    assert count == nodes, (path, options, count, nodes)
    return len(lines)


def check(cttool, path, nodes):
    """Any trace, however damaged."""
    for options in ([], ["--limit", "1"], ["--limit", "9"], ["--limit", "60"], ["--fold", "all"],
                    ["--fold", "none"], ["--depth", "2"], ["--min", "5%"], ["--hide", "/e/"],
                    ["--no-builtin"], ["--only", "/t/"], ["--only", "/t/", "--hide", "/e/"],
                    ["--hide", "*", "--limit", "3"]):
        said = tree(cttool, path, *options)
        check_sums((path, options), said)
        assert said["nodes"] + said["hidden"]["nodes"] == nodes, (path, options)
        if "--limit" in options:
            assert len(said["folds"]) <= int(options[-1]), (path, options)
        if "--depth" in options:
            assert all(fold["depth"] <= 2 for fold in said["folds"]), path
        if "--min" in options:
            least = said["total_ns"] * 0.05
            assert all(fold["total_ns"] >= least for fold in said["folds"]), path
    if nodes:
        assert check_text(cttool, path, nodes) <= 201, path
        check_text(cttool, path, nodes, "--limit", "5")
        check_text(cttool, path, nodes, "--depth", "3", "--no-builtin")
        check_text(cttool, path, nodes, "--limit", "0")


def quiet_part(folds):
    """The node with the most folds under it of which none is worth a line whatever its time."""
    above = {fold["id"]: fold["parent"] for fold in folds}
    under = dict.fromkeys(above, 0)
    loud = set()
    for fold in reversed(folds):
        if fold["open"] or fold["threw"] or fold["kind"] == "error":
            loud.add(fold["id"])
        if fold["id"] in loud:
            loud.add(fold["parent"])
        if fold["parent"] is not None:
            under[fold["parent"]] += under[fold["id"]] + 1
    quiet = [fold["id"] for fold in folds if fold["count"] == 1 and fold["id"] not in loud]
    return max(quiet, key=lambda place: (under[place], place))


def check_choice(cttool, path, folds):
    """Where nothing else is worth a line, the lines are those of the greatest totals."""
    under = str(quiet_part(folds))
    folds = tree(cttool, path, "--under", under)["folds"]
    assert len(folds) > 10, (path, under)
    order = sorted(folds, key=lambda fold: (-fold["total_ns"], fold["id"]))
    for limit in (1, 5, 150):
        wanted = {fold["id"] for fold in order[:limit]}
        found = {fold["id"] for fold in
                 tree(cttool, path, "--under", under, "--limit", str(limit))["folds"]}
        assert wanted == found, (path, under, limit, wanted ^ found)


def main():
    codetrace, cttool, make_random, corpus, *traces = sys.argv[1:]
    for path in traces:
        document = json.loads(output(codetrace, "-J", path))
        said = tree(cttool, path)
        check_folds(path, document, said)
        check_times(path, document, said)
        check(cttool, path, len(document["cp"]))
        check_choice(cttool, path, said["folds"])
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([make_random, folder, "50", "11"], check=True)
        paths = sorted(map(str, pathlib.Path(folder).iterdir()))
        assert len(paths) == 50, paths
        for path in paths:
            document = json.loads(output(codetrace, "-J", path))
            check_folds(path, document, tree(cttool, path), is_damaged=True)
            check(cttool, path, len(document["cp"]))
    damaged = 0
    for path in sorted(map(str, pathlib.Path(corpus).iterdir())):
        run = subprocess.run([codetrace, "-J", path], stdout=subprocess.PIPE,
                             stderr=subprocess.DEVNULL, check=False)
        if run.returncode != 0 or damaged == 40:
            continue
        nodes = len(json.loads(run.stdout)["cp"])
        damaged += nodes > 3
        if nodes > 3:
            check(cttool, path, nodes)
    assert damaged >= 10, damaged
    print(f"{len(traces)} traces, {len(paths)} random ones and {damaged} damaged ones")


if __name__ == "__main__":
    main()
