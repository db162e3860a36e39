#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What cttool report puts into its page, unpacked and held against export, top, summary and
response.

report_test.py CODETRACE CTTOOL MAKE_RANDOM_TRACES MAKE_CASE_TRACES PAGE CORPUS TRACE...: each trace,
random ones in both byte orders, the damaged ones of a folder, and hostile and awkward ones.
"""
import collections
import itertools
import json
import pathlib
import subprocess
import sys
import tempfile

from export_test import FILTERS, node_count
from figures_test import output
from report_page import END_UNTIMED, HAS_VALUES, MOVED, UNTIMED, Page

DETAILS = ["path", "body", "size", "operation", "header", "code", "status", "number", "level",
           "message", "event", "sequence", "this", "args", "returned", "thrown"]
MARKS = {"untimed": UNTIMED, "end_untimed": END_UNTIMED, "moved": MOVED}
LONGEST = 4096  # bytes of a label or a file
OWN = ["calls", "total_ns", "own_ns", "own_memory"]

HOSTILE = r"""
== trace
A: class user "</script><b>"
F: function user "<!--<script>" class A file "/x</script>.php" line 3
G: function user "javascript:\xe2\x80\xaealert(1)"
startup @10 url "http://h/</script><img src=x onerror=alert(1)>" method "</SCRIPT>"
a: call @10+1 at "/\xff</script>":7 fn F args ["</script>", "\xe2\x80\xa8\0\x1b[2J", "\xff\xed\xa0\x80"]
event "</script\x09>" sequence 1
error 2 "<script src=//h></script>\r\n"
header 0 "X: </script>\0\xff"
write "<script>alert(1)</script>\xe2\x80\xa8"
return @10+9 of a value "--></script>"
b: call @10+10 fn G args [["</script>" => "\xe2\x80\xae"]]
== command
codetrace -T TRACE
"""
# Calls with every kind of value: whether an entry has few bytes or is JSON, it says what export does.
CALLS = [
    "null, undef, true, false, 0, -1, 9007199254740992, 9007199254740993, -9007199254740993",
    "9223372036854775807, -9223372036854775808, res(\"stream\", 9007199254740993), res(\"\", 3)",
    "0.0, 1.0, 0.1, 1e300, 1e-7, 123456789.5, nan, inf, -inf, bits(9223372036854775808)",
    r'"", "\"\\\x01\x1f\x7f/\n", "\xc3\xa9", "\xef\xbb\xbfmark", "\xef\xbb\xbf", "**CUT**", "a\0"',
    r'cut("abc", 9), cut("\xc3\xa9", 9), cut("", 5), cut("**CUT**", 99), "\xf0\x9f\x98\x80"',
    r'"\xff"', r'["k" => "\xc3"]', r'res("\xff", 1)', f'res("{"n" * 300}", 1)', "code(10), 1",
    "[], [1, 2], [1 => 2], [0 => 1, 1 => 2, ...], [...], [\"a\" => 1, ...], [1, ...]",
    '["5" => 1, 5 => 2, "b" => 3], [cut("k", 9) => 1, "k**CUT**" => 2, 7 => [["k" => [1, [2]]]]]',
    '[1, "**CUT**"], ["x" => "**CUT**"], [cut("**CUT**", 99)], [9007199254740993 => 1]',
    '["**CUT**" => 1, 2], 3', "[1.5 => 2]", "[null => 1]", "[true => 1]", "[[1] => 2]",
    "nest(31, 1)", "nest(32, 1)", "nest(33, 1)", "nest(300, [])", "array(5, [1])",
    "obj(C, 7), obj(none, 0), res(none, 3), obj(999, 4294967295), obj(D, 1)", "obj(E, 7)",
    r'["\xc3\xa9" => obj(C, 300), "" => res("stream", 18446744073709551615)]',
]
VALUES = (r'C: class user "A\xff\"\\"' + f'\nD: class user "{"d" * 256}"\nE: class user "{"e" * 257}"\n' +
          'F: function user "f"\nM: function user "m" class C\nstartup @10\n' + "".join(
              f"c{i}: call @10+{4 * i} fn F args [{args}]\nreturn @10+{4 * i + 1} of c{i} value {i}\n"
              f"d{i}: method @10+{4 * i + 2} fn M this obj(C, {i}) args [{args}]\n"
              f"exception @10+{4 * i + 3} of d{i} value [{args}]\n"
              for i, args in enumerate(CALLS)) + "shutdown @11\n")
AWKWARD = {
    "empty": "", "request": 'startup @10\n',
    "untimed": 'F: function user "f"\nstartup\na: call fn F\nreturn of a\nshutdown\n',
    "texts": f'startup @10\ni: include @10+1 "{"p" * (LONGEST + 1)}"\ninclude_return @10+2 of i\n'
             f'j: include @10+3 "{"p" * LONGEST}"\ninclude_return @10+4 of j\n'
             f'error @10+5 1 "{"e" * 9000}"\nerror @10+6 12345 ""\nheader 3\nheader 0 cut("X: 1", 99)\n'
             'send_headers 200 "OK"\nsend_headers 404 "no"\nexit\nflush\n'
             'k: include @10+7 "/k"\ninclude_exception @10+8 of k value 5\nshutdown @10+9\n',
    "values": VALUES,
    "long": 'F: function user "f"\nstartup @10\n' + "".join(
        f'c{i}: call @10+{2 * i + 1} fn F args ["{chr(97 + i % 26) * size}"]\n'
        f'return @10+{2 * i + 2} of c{i}\n'
        for i, size in enumerate([5, 200000, 5, 131000, 100, 131072, 60000, 60000, 60000])),
}


def report(cttool, path, *options):
    return output(cttool, "report", path, "-o", "-", *options)


def jsonl(cttool, path, *options):
    """What export says; figures beyond 2**53, which are texts there, as numbers."""
    lines = output(cttool, "export", path, "--to", "jsonl", *options).decode().split("\n")
    rows = [json.loads(line) for line in lines[1:] if line]
    for row in rows:
        for key in ("start_ns", "total_ns", "memory", "memory_delta"):
            if isinstance(row[key], str):
                row[key] = int(row[key])
    return json.loads(lines[0]), rows


def shortened(text):
    data = text.encode()
    if len(data) <= LONGEST:
        return text
    return data[:LONGEST].decode(errors="ignore") + "…"


def label_of(row, title):
    """What a node that is no call is called; nothing for what has no name."""
    kind = row["kind"]
    if kind == "error":
        text = row.get("message", "")
        return f'{row.get("level", "error")}: {shortened(text)}'
    text = {"request": title, "include": row.get("path"), "header": row.get("header"),
            "send_headers": str(row.get("code")), "event": row.get("event")}.get(kind)
    return shortened(text) if text else None


def check_node(page, node, row, title, is_whole):
    where = (node, row)
    for key in ("id", "kind", "start_ns", "total_ns", "outcome", "memory", "memory_delta"):
        assert node[key] == row[key], (key, where)
    assert node["file"] == (None if row["file"] is None else shortened(row["file"])), where
    if node["file"] is not None:
        assert node["line"] == (row["line"] or 0), where
    for mark, flag in MARKS.items():
        assert bool(node["flags"] & flag) == (mark in row["marks"]), where
    if row["kind"] == "call":
        name = page.functions["name"][node["name"] - 1] if node["name"] else None
        assert name == row["name"], where
    else:
        label = page.labels[node["name"] - 1] if node["name"] else None
        assert (label or None) == label_of(row, title), (label, where)
    if node["flags"] & HAS_VALUES:
        wanted = {key: row[key] for key in DETAILS if key in row}
        assert node.get("values", wanted if not is_whole else None) == wanted, where
    else:
        assert not [key for key in DETAILS if key in row and key != "path"], where
        assert len(row.get("path", "").encode()) <= LONGEST, where


def check_functions(path, page, rows, is_filtered):
    """What calls of a function come to, of those in the page; own time is what their children in
    the page leave."""
    wanted = [dict.fromkeys(OWN, 0) for _ in page.functions["name"]]
    by_id = {node["id"]: node for node in page.nodes}
    own = {node["id"]: [node["total_ns"], node["memory_delta"] or 0] for node in page.nodes}
    around = {}  # the functions around a node, itself included
    for node in page.nodes:
        above = around.get(node["parent"], frozenset())
        is_call = node["kind"] == "call" and node["name"] != 0
        around[node["id"]] = above | {node["name"]} if is_call else above
        if node["parent"] is not None:
            own[node["parent"]][0] -= node["total_ns"]
            own[node["parent"]][1] -= node["memory_delta"] or 0
        if is_call and node["name"] not in above:
            wanted[node["name"] - 1]["total_ns"] += node["total_ns"]
    for id_, (own_ns, memory) in own.items():
        if by_id[id_]["kind"] == "call" and by_id[id_]["name"] != 0:
            row = wanted[by_id[id_]["name"] - 1]
            row["calls"] += 1
            row["own_ns"] += own_ns
            row["own_memory"] += memory
    said = [dict(zip(page.functions, row)) for row in zip(*page.functions.values())]
    for function, row in zip(said, wanted):
        row["own_memory"] = (row["own_memory"] + 2**63) % 2**64 - 2**63
        assert {key: function[key] for key in OWN} == row, (function, row)
    if is_filtered:
        return
    for function in said:
        function["file"] = page.files[function["file"]] if function["file"] >= 0 else None
    for function in rows:
        function["file"] = function["file"] and shortened(function["file"])
    # What has no place has no line either, however that is said.
    keys = [[tuple(row[key] for key in ["name", "builtin", *OWN]) +
             ((row["file"], row["line"]) if row["file"] else ()) for row in table if row["calls"]]
            for table in (said, rows)]
    assert collections.Counter(keys[0]) == collections.Counter(keys[1]), path


def check(cttool, built, path, *options):
    head, rows = jsonl(cttool, path, *options)
    data = report(cttool, path, *options)
    assert data == report(cttool, path, *options), "the same bytes on each run"
    page = Page(data, built)
    meta = page.meta
    assert meta["schema"] == "cttool.report/1" and meta["trace"] == path
    assert meta["made_by"] == head["exporter"] and meta["title"] == head["title"]
    assert meta["started_ns"] == (head["started_ns"] or "")
    for key in ("damaged", "untimed", "moved"):
        assert meta[key] == head[key], key
    assert not meta["left_out"]["nodes"] and all(count > 0 for count in meta["blocks"])
    assert len(page.nodes) == len(rows), path
    parents = {row["id"]: row["parent"] for row in jsonl(cttool, path)[1]}
    there = {row["id"] for row in rows}
    for node, row in zip(page.nodes, rows):
        check_node(page, node, row, head["title"], True)
        above = row["parent"]
        while above is not None and above not in there:
            above = parents[above]
        assert node["parent"] == above, (node, above)
    top = json.loads(output(cttool, "top", path, "--limit", "0", "--format", "json"))["rows"]
    check_functions(path, page, top, bool(options))
    assert page.summary == json.loads(output(cttool, "summary", path, "--format", "json"))
    response = json.loads(output(cttool, "response", path, "--format", "json"))
    response.pop("body", None)
    response.pop("body_base64", None)
    assert page.response == response
    return data, page, head, rows


def check_sizes(cttool, built, path, whole):
    """Of less room the values of the cheapest nodes go first, and what is left is what it was."""
    data, page, head, rows = whole
    values = sum(len(block) for block in data.split(b"\n") if b'id="values-' in block)
    least = len(data) - values
    before = None
    for part in (1.1, 0.9, 0.5, 0.2, 0):
        room = least + 200 + int(values * part)
        partly = Page(report(cttool, path, "--max-size", str(room)), built)
        assert partly.meta["left_out"]["max_size"] == room
        for node, row in zip(partly.nodes, rows, strict=True):
            check_node(partly, node, row, head["title"], False)
        kept = {node["id"] for node in partly.order if "values" in node}
        assert before is None or kept <= before, (path, part)
        before = kept
        if part > 1:
            assert len(kept) == len(page.order), path
        # What was left out stands at the end, but for single values that are very long.
        *_, last = partly.meta["blocks"] or [1]
        assert all(count >= -1 for count in partly.meta["blocks"][:-1]), partly.meta
        assert part > 0.9 or last < 0 or len(page.order) < 2 or values < 1000, partly.meta
    run = subprocess.run([cttool, "report", path, "-o", "-", "--max-size", str(least // 2)],
                         capture_output=True, check=False)
    assert run.returncode == 2 and not run.stdout and b"--max-size" in run.stderr, run


def check_hostile(data, built):
    """Nothing of the trace is in the page as it is."""
    for text in (b"alert", b"onerror", b"javascript:", b"</script", b"<script", b"<!--", b"\0",
                 b"\xff", b"\x1b", "\u2028".encode(), "\u2029".encode(), "\u202e".encode()):
        blocks = data.count(b"<script type=") - built.count(b"<script type=")
        allowed = blocks if b"script" in text and b":" not in text else 0
        allowed -= text == b"<!--"  # the mark that the blocks replace
        assert data.count(text) == built.count(text) + allowed, text


def traces_of_cases(make_case_traces, folder, cases):
    """Traces in words as files, in both byte orders."""
    paths = []
    for name, text in cases.items():
        case = pathlib.Path(folder) / f"{name}.case"
        case.write_text(text if text.startswith("\n==") else
                        f"== trace\n{text}== command\ncodetrace -T TRACE\n")
        to = pathlib.Path(folder) / name
        to.mkdir()
        subprocess.run([make_case_traces, str(to), str(case)], check=True)
        made = sorted(map(str, to.iterdir()))
        assert len(made) == 2, (name, made)
        paths += made
    return paths


def main():
    codetrace, cttool, make_random, make_cases, page, corpus, *traces = sys.argv[1:]
    built = pathlib.Path(page).read_bytes()
    turns = itertools.cycle(FILTERS)
    with tempfile.TemporaryDirectory() as folder:
        for path in traces:
            whole = check(cttool, built, path)
            assert whole[1].lines < len(whole[1].order) / 2, "most calls have few bytes"
            check_sizes(cttool, built, path, whole)
            if pathlib.Path(path).stat().st_size < 1 << 20:
                for options in FILTERS:
                    if jsonl_has_nodes(cttool, path, options):
                        check(cttool, built, path, *options)
        for path in traces_of_cases(make_cases, folder, AWKWARD):
            check_sizes(cttool, built, path, check(cttool, built, path))
        for path in traces_of_cases(make_cases, folder, {"hostile": HOSTILE}):
            check_hostile(check(cttool, built, path)[0], built)
        made = pathlib.Path(folder) / "random"
        made.mkdir()
        subprocess.run([make_random, str(made), "50", "29"], check=True)
        paths = [str(path) for path in sorted(made.iterdir())
                 if node_count(codetrace, str(path)) is not None]
        assert len(paths) >= 40, paths
        damaged = [str(path) for path in sorted(pathlib.Path(corpus).iterdir())
                   if (node_count(codetrace, str(path)) or 0) > 3][:60]
        assert len(damaged) >= 20, damaged
        for path in paths + damaged:
            check_sizes(cttool, built, path, check(cttool, built, path))
            options = next(turns)
            if jsonl_has_nodes(cttool, path, options):
                check(cttool, built, path, *options)
    print(f"{len(traces)} traces, {len(paths)} random ones and {len(damaged)} damaged ones")


def jsonl_has_nodes(cttool, path, options):
    return bool(output(cttool, "export", path, "--to", "jsonl", *options))


if __name__ == "__main__":
    main()
