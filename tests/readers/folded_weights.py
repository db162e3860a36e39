#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""folded_weights.py CTTOOL TRACE...: the weights of folded stacks add up to the request's time, growth of
memory and calls, and those of each function to its own."""
import json
import pathlib
import subprocess
import sys
from collections import Counter

SPANS = "kind in ('request', 'call', 'include', 'write')"
WEIGHTS = {
    "own": ("own_ns", "select total_ns as whole from request"),
    "memory": ("max(own_memory, 0)", f"select sum(max(own_memory, 0)) as whole from nodes where {SPANS}"),
    "calls": ("1", "select calls as whole from request"),
}


def rows(tool, trace, query):
    said = subprocess.run([tool, "sql", trace, "--format", "jsonl", query], check=True,
                          stdout=subprocess.PIPE).stdout
    return [json.loads(line) for line in said.split(b"\n")[:-1]]


def weight_of(figure, line):
    if not figure.isdigit():
        sys.exit(f"not a line of folded stacks: {line}")
    return int(figure)


def leaves(tool, trace, weight):
    """The weights by the last name of the stacks."""
    text = subprocess.run([tool, "export", trace, "--to", "folded", "--weight", weight, "-o", "-"], check=True,
                          stdout=subprocess.PIPE).stdout.decode()
    sums = Counter()
    for line in text.split("\n")[:-1]:
        stack, _, figure = line.rpartition(" ")
        sums[stack.rpartition(";")[2]] += weight_of(figure, line)
    return sums, text.count("\n")


def check(tool, trace, weight):
    column, query = WEIGHTS[weight]
    got, lines = leaves(tool, trace, weight)
    whole = rows(tool, trace, query)[0]["whole"]
    if sum(got.values()) != whole or not whole:
        sys.exit(f"{trace}: weights come to {sum(got.values())} instead of {whole}")
    wanted = rows(tool, trace, f"select name, sum({column}) as own from calls group by name")
    for row in wanted:
        if got[row["name"]] != row["own"]:
            sys.exit(f"{trace}: {weight} of {row['name']}: {got[row['name']]} instead of {row['own']}")
    print(f"ok  {f'folded, {weight}':24} {pathlib.Path(trace).name:16} {lines} lines, {whole} in all, "
          f"{len(wanted)} functions as in calls", flush=True)


def main():
    for trace in sys.argv[2:]:
        for weight in WEIGHTS:
            check(sys.argv[1], trace, weight)


if __name__ == "__main__":
    main()
