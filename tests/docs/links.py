#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""links.py FILE.md...: whether the links between pages lead somewhere: to a file or folder, and to a
heading of it. Addresses on the web are not asked."""

import re
import sys
from pathlib import Path

FENCED = re.compile(r"^(```|~~~).*?^\1", re.MULTILINE | re.DOTALL)
INDENTED = re.compile(r"(?<=\n\n)(?:(?: {4}|\t).*(?:\n|$))+")
CODE = re.compile(r"`[^`\n]*`")
LINK = re.compile(r"\]\(\s*<?([^)\s>]+)>?[^)]*\)")
HEADING = re.compile(r"^#{1,6} +(.+?) *#*$", re.MULTILINE)


def prose(page: Path) -> str:
    """The page with its code blanked out; lines keep their numbers."""
    text = page.read_text(encoding="utf-8")
    for pattern in FENCED, INDENTED, CODE:
        text = pattern.sub(lambda match: re.sub(r"[^\n]", " ", match.group()), text)
    return text


def anchors(page: Path) -> set:
    """The names of a page's headings, as the web pages of a repository make them."""
    text = FENCED.sub("", page.read_text(encoding="utf-8"))
    found = {}
    names = set()
    for heading in HEADING.findall(text):
        words = re.sub(r"\[([^]]*)\]\([^)]*\)", r"\1", heading)
        name = re.sub(r"[^\w\- ]", "", words.lower()).replace(" ", "-")
        count = found[name] = found.get(name, -1) + 1
        names.add(f"{name}-{count}" if count else name)
    return names


def complaint(page: Path, target: str) -> str:
    """What is wrong with a link; empty for nothing."""
    if re.match(r"[a-z]+:", target):
        return ""
    path, _, anchor = target.partition("#")
    place = page.parent / path if path else page
    if not place.exists():
        return "does not exist"
    if anchor and (place.suffix != ".md" or anchor not in anchors(place)):
        return "has no such heading"
    return ""


def main() -> int:
    wrong = 0
    for page in map(Path, sys.argv[1:]):
        text = prose(page)
        for link in LINK.finditer(text):
            reason = complaint(page, link.group(1))
            if reason:
                line = text.count("\n", 0, link.start()) + 1
                print(f"{page}:{line}: {link.group(1)} {reason}")
                wrong += 1
    return 1 if wrong or len(sys.argv) < 2 else 0


sys.exit(main())
