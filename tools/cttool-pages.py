#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""cttool-pages.py CTTOOL [--check]: makes what repeats the help texts of cttool: the completions for
three shells and the manual page. With --check nothing is written; status 1 says that one is stale."""
import pathlib
import sys

from pages import completions, cttool_help, manual


def main():
    root = pathlib.Path(__file__).resolve().parent.parent
    whole, verbs = cttool_help.read(sys.argv[1])
    template = (root / "man/cttool.1.in").read_text()
    made = {
        "completions/cttool.bash": completions.bash(whole, verbs),
        "completions/_cttool": completions.zsh(whole, verbs),
        "completions/cttool.fish": completions.fish(whole, verbs),
        "man/cttool.1": manual.manual(template, whole, verbs),
    }
    stale = 0
    for name, text in made.items():
        path = root / name
        if path.exists() and path.read_text() == text:
            continue
        if "--check" in sys.argv:
            print(f"{name} is not what tools/cttool-pages.py makes of the help texts")
            stale = 1
        else:
            path.write_text(text)
    sys.exit(stale)


main()
