#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What cttool check says of files agrees with what the reader says when it reads them: which it
refuses, how many complaints it has, and how many checkpoints it leaves out. Its documents keep to
their schema, of damaged files too.

check_test.py CODETRACE CTTOOL MAKE_RANDOM_TRACES SCHEMA CORPUS TRACE...: each trace, random ones, and
some of the files of a folder, all of them with CODETRACE_WHOLE_SIZE=1.
"""
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

from jsonschema import Draft202012Validator

# What each line of the reader is about.
COMPLAINTS = [
    ("skipped", r"Invalid checkpoint type"),
    ("damaged", r"checkpoint at DATA offset \d+: damaged at payload offset"),
    ("broken", r"checkpoint at DATA offset \d+: (header word|payload) needs"),
    ("repaired", r"^warning:"),
]


def complaints_of(codetrace, path):
    """The reader's lines about a file; None for one that it refuses."""
    done = subprocess.run([codetrace, "-S", path], stdout=subprocess.DEVNULL,
                          stderr=subprocess.PIPE, check=False)
    lines = done.stderr.decode(errors="replace").splitlines()
    if done.returncode != 0:
        assert lines[0].startswith("Failed to open"), lines
        return None
    return lines


def figures_of(lines):
    """How many of which there are, as the check has them."""
    figures = dict.fromkeys(("skipped", "damaged", "rejected", "repaired", "broken"), 0)
    for line in lines:
        kinds = [kind for kind, pattern in COMPLAINTS if re.search(pattern, line)]
        figures[kinds[0] if kinds else "rejected"] += 1
    return figures


def left_out(lines):
    """How many checkpoints the reader leaves out behind what ends the tree; None if nothing does."""
    at = [place for place, line in enumerate(lines) if "stack is corrupted" in line]
    if not at:
        return None
    return figures_of(lines[at[0] + 1:])["rejected"]


def check_file(found, lines):
    assert (found["fatal"] != 0) == (lines is None), found
    for level in ("fatal", "lost", "odd"):
        listed = sum(defect["level"] == level for defect in found["defects"])
        assert listed <= found[level], (level, found)
    assert found["clean"] == (not found["counts"]), found
    if lines is None:
        return
    figures = {key: int(value) for key, value in found["reader"].items() if key != "records"}
    assert figures == figures_of(lines), (found["trace"], figures, figures_of(lines))
    costs = [defect["cost"] for defect in found["defects"]
             if defect["code"] in ("CT-END-TWICE", "CT-END-LATE")]
    said = [int(cost.split()[0].replace(",", "")) for cost in costs]
    expected = left_out(lines)
    assert said == ([] if expected is None else [expected]), (found["trace"], said, expected)


def main():
    codetrace, cttool, make_random_traces, schema, corpus, *paths = sys.argv[1:]
    whole = "CODETRACE_WHOLE_SIZE" in os.environ
    names = sorted(str(path) for path in pathlib.Path(corpus).iterdir())
    names = paths + (names if whole else names[:120])
    validator = Draft202012Validator(json.loads(pathlib.Path(schema).read_text(encoding="utf-8")))
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([make_random_traces, folder, "2000" if whole else "150", "13"], check=True)
        names += sorted(str(path) for path in pathlib.Path(folder).glob("*.ct"))
        done = subprocess.run([cttool, "check", *names, "--format", "json"], stdout=subprocess.PIPE,
                              check=False)
        assert done.returncode == 1, done.returncode
        document = json.loads(done.stdout)
        assert not list(validator.iter_errors(document)), next(validator.iter_errors(document))
        assert [found["trace"] for found in document["files"]] == names
        refused = 0
        for found in document["files"]:
            lines = complaints_of(codetrace, found["trace"])
            check_file(found, lines)
            refused += lines is None
    codes = {code for found in document["files"] for code in found["counts"]}
    assert len(codes) > 30, sorted(codes)
    for found in document["files"][:len(paths)]:
        # The one oddity of the traces of real programs: a class that nothing mentions.
        counts = {} if "words" not in found["trace"] else {"CT-UNUSED": 1}
        assert found["counts"] == counts, found
    print(f"{len(names)} files, {refused} of them refused, {len(codes)} codes")


if __name__ == "__main__":
    main()
