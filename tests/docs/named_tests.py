#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""named_tests.py ROOT: whether the tests that docs/robustness.md names in its tables exist.

A test is named `Suite.Name`, in tests/unit or tests/cli; `Golden.name` is the case
tests/cli/name.case; what follows the word bench is a case of bench/worst.sh.
"""
import pathlib
import re
import sys

PAGE = "docs/robustness.md"


def cells():
    """The last cell of each row of the page, with the number of its line."""
    for number, line in enumerate((root / PAGE).read_text().splitlines(), 1):
        if line.startswith("|") and not line.startswith("|---"):
            yield number, line.rstrip("| ").rsplit("|", 1)[1]


def existing_tests():
    for folder in "unit", "cli":
        for path in sorted((root / "tests" / folder).glob("*.cpp")):
            for suite, name in re.findall(
                r"^TEST(?:_F|_P)?\(\s*(\w+)\s*,\s*(\w+)\s*\)", path.read_text(), re.M
            ):
                yield f"{suite}.{name}"
    for path in (root / "tests/cli").glob("*.case"):
        yield "Golden." + path.stem.replace("-", "_")


root = pathlib.Path(sys.argv[1])
known = set(existing_tests())
bench = "".join(path.read_text() for path in (root / "bench").glob("*.cpp"))
seen = 0
missing = 0
for number, cell in cells():
    for name in re.findall(r"`([^`]*)`", cell):
        is_test = "." in name
        seen += is_test
        if is_test and name not in known or not is_test and f'"{name}"' not in bench:
            print(f"{PAGE}:{number}: {name} does not exist")
            missing += 1
if not seen:
    print(f"{PAGE}: no tests are named")
sys.exit(bool(missing or not seen))
