# SPDX-License-Identifier: MIT
"""What the help texts of cttool say, as data; the pages about it are made from that."""
import dataclasses
import re
import subprocess


@dataclasses.dataclass
class Entry:
    """A line of the help: an option with its names, an operand or a verb."""

    names: list
    value: str  # such as FILE, a|b or [CLASS]; empty for none
    meaning: str

    def words(self):
        """The words of which one is the value; none if it may be anything."""
        return self.value.split("|") if re.fullmatch(r"[a-z]+(\|[a-z]+)+", self.value) else []

    def takes_value(self):
        return self.value != "" and not self.value.startswith("[")

    def takes_file(self):
        return self.value in ("FILE", "OUT", "FILE...")


@dataclasses.dataclass
class Page:
    name: str
    question: str
    usage: str
    operands: list
    options: list
    examples: list


def help_text(program, *verb):
    return subprocess.run([program, "help", *verb], check=True, text=True,
                          stdout=subprocess.PIPE).stdout


def entry(line):
    names, _, meaning = re.match(r"  (.*?)(  +)(\S.*)$", line).groups()
    if not names.startswith("-"):
        return Entry([names], "", meaning)
    words = re.split(r",? ", names)
    return Entry([word for word in words if word.startswith("-")],
                 " ".join(word for word in words if not word.startswith("-")), meaning)


def page(name, text):
    head, _, examples = text.partition("\nExamples:\n")
    # A name that is too long for its column has its meaning on the next line.
    lines = re.sub(r"^(  \S.*)\n {28}", r"\1  ", head, flags=re.M).split("\n")
    entries = [entry(line) for line in lines if line.startswith("  ")]
    return Page(name, lines[0], lines[2].removeprefix("Usage: "),
                [row for row in entries if not row.names[0].startswith("-")],
                [row for row in entries if row.names[0].startswith("-")],
                [line.removeprefix("  ") for line in examples.rstrip("\n").split("\n")])


def read(program):
    """The page of the program and those of its verbs, in its own order."""
    whole = page("cttool", help_text(program))
    verbs = [page(row.names[0], help_text(program, row.names[0]))
             for row in whole.operands if row.names[0] != "help"]
    return whole, verbs
