#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""random_traces.py CTTOOL TRACE...: whatever a trace holds and however it is damaged, the readers that are
quick to ask accept what is exported, and see all of it. The folder of npm's packages is in READERS."""
import csv
import json
import os
import pathlib
import subprocess
import sys

import jsonschema
from companion import for_each_trace, passed

SCHEMA = pathlib.Path(os.environ["READERS"], "speedscope/dist/release/file-format-schema.json")
VALIDATOR = jsonschema.Draft7Validator(json.loads(SCHEMA.read_text()))
SPANS = "kind in ('request', 'call', 'include', 'write')"
FACTS = f"select total_ns, nodes, calls, (select count(*) from nodes where {SPANS}) as spans from request"


def run(*command):
    """What a program prints. cttool says on standard error what is damaged, and others have nothing to say."""
    return subprocess.run(command, capture_output=True, check=True).stdout.decode()


def expect(what, got, wanted):
    if got != wanted:
        raise ValueError(f"{what}: {got} instead of {wanted}")


def check_speedscope(path, facts):
    document = json.loads(path.read_text(encoding="utf-8"))
    VALIDATOR.validate(document)
    for profile in document["profiles"]:
        expect("events", len(profile["events"]), 2 * facts["spans"])
    expect("total", document["profiles"][0]["endValue"], facts["total_ns"])


def check_callgrind(path, facts):
    options = "--threshold=100", "--show-percs=no", "--auto=no"
    for more in (), ("--inclusive=yes", "--tree=both"):
        run_of = subprocess.run(["callgrind_annotate", *options, *more, path], capture_output=True, check=True)
        expect("what callgrind_annotate complains about", run_of.stderr, b"")
        lines = run_of.stdout.decode(errors="replace").split("\n")
        totals = [line.split()[0] for line in lines if "PROGRAM TOTALS" in line]
        if facts["total_ns"]:
            expect("total", totals, [f"{facts['total_ns']:,}"])


def check_jsonl(path, facts):
    run_of = subprocess.run(["jq", ".id", path], capture_output=True, check=False)
    # What is nested deeper than some hundred levels jq refuses.
    if b"Exceeds depth limit" not in run_of.stderr:
        wanted = ["null", *map(str, range(facts["nodes"]))]
        expect("identities", run_of.stdout.decode().split(), wanted)


def check_csv(path, facts):
    with path.open(newline="", encoding="utf-8") as file:
        rows = list(csv.reader(file, strict=True))
    expect("rows", len(rows), facts["calls"] + 1)
    expect("fields", {len(row) for row in rows}, {22})


def check_sqlite(path, facts):
    said = run("sqlite3", "-bail", "-readonly", path,
               "pragma integrity_check; select count(*) from nodes; select count(*) from calls")
    expect("integrity and rows", said.split(), ["ok", str(facts["nodes"]), str(facts["calls"])])


CHECKS = {"speedscope": check_speedscope, "callgrind": check_callgrind, "jsonl": check_jsonl, "csv": check_csv,
          "sqlite": check_sqlite}
checked = 0


def check(tool, trace, folder):
    global checked
    said = subprocess.run([tool, "sql", trace, "--format", "jsonl", FACTS], capture_output=True, check=False)
    if said.returncode == 2:
        return  # no trace any more
    facts = json.loads(said.stdout)
    for form, well in CHECKS.items():
        path = folder / form
        try:
            run(tool, "export", trace, "--to", form, "-o", path)
            well(path, facts)
        except (ValueError, LookupError, subprocess.CalledProcessError, jsonschema.ValidationError) as error:
            sys.exit(f"{trace}, {form}: {error}")
    checked += 1


if __name__ == "__main__":
    csv.field_size_limit(2 ** 31 - 1)
    for_each_trace(check)
    expect("most of them are traces", checked * 2 >= len(sys.argv) - 2 > 0, True)
    passed("quick readers", f"{checked} random", f"accepted and complete: {', '.join(CHECKS)}")
