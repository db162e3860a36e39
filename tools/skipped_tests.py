#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""skipped_tests.py REPORT.xml: lists the tests that were skipped, whole or in part, by the report of
`ctest --output-junit`, and why. A test tells why with a line "SKIPPED: why", or as GoogleTest does."""
import re
import sys
import xml.etree.ElementTree


def reasons(test):
    output = (test.findtext("system-out") or "").replace("\r", "")
    found = re.findall(r"^SKIPPED: (.*)$", output, re.MULTILINE)
    found += [" ".join(text.split()) or "no reason given"
              for text in re.findall(r": Skipped\n((?:.*\n)*?)\[  SKIPPED \]", output)]
    if not found and test.find("skipped") is not None and test.get("status") != "disabled":
        found = [test.find("skipped").get("message")]
    return found


def main():
    try:
        report = xml.etree.ElementTree.parse(sys.argv[1])
    except xml.etree.ElementTree.ParseError as error:
        print(f"\nWhat was skipped cannot be told: {error}")
        return
    lines = [f"  {test.get('name').split()[0]}: {reason}" for test in report.iter("testcase")
             for reason in reasons(test)]
    if lines:
        print("\nSkipped, whole or in part:", *lines, sep="\n")


if __name__ == "__main__":
    main()
