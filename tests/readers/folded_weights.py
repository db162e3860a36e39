#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""folded_weights.py CTTOOL TRACE...: the weights of folded stacks add up to the request's time, growth of
memory and calls, and those of each function to its own."""
import sys
from collections import Counter

from companion import export, for_each_trace, passed, rows

SPANS = "kind in ('request', 'call', 'include', 'write')"
WEIGHTS = {
    "own": ("own_ns", "select total_ns as whole from request"),
    "memory": ("max(own_memory, 0)", f"select sum(max(own_memory, 0)) as whole from nodes where {SPANS}"),
    "calls": ("1", "select calls as whole from request"),
}


def lines_of(path):
    """Stack and weight of each line."""
    for line in path.read_text(encoding="utf-8").split("\n")[:-1]:
        stack, _, weight = line.rpartition(" ")
        if not stack or not weight.isdigit():
            sys.exit(f"not a line of folded stacks: {line}")
        yield stack, int(weight)


def check_weight(tool, trace, folder, weight):
    column, query = WEIGHTS[weight]
    path = export(tool, trace, folder / f"{weight}.txt", "folded", "--weight", weight)
    by_leaf = Counter()
    for stack, figure in lines_of(path):
        by_leaf[stack.rpartition(";")[2]] += figure
    whole = rows(tool, trace, query)[0]["whole"]
    if sum(by_leaf.values()) != whole or not whole:
        sys.exit(f"{trace}: {weight} comes to {sum(by_leaf.values())} instead of {whole}")
    wanted = rows(tool, trace, f"select name, sum({column}) as own from calls group by name")
    for row in wanted:
        if by_leaf[row["name"]] != row["own"]:
            sys.exit(f"{trace}: {weight} of {row['name']}: {by_leaf[row['name']]} instead of {row['own']}")
    passed(f"folded, {weight}", trace, f"{whole} in all, {len(wanted)} functions as in calls")


def check(tool, trace, folder):
    for weight in WEIGHTS:
        check_weight(tool, trace, folder, weight)


if __name__ == "__main__":
    for_each_trace(check)
