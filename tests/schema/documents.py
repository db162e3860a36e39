# SPDX-License-Identifier: MIT
"""JSON documents of the tool: of traces that it reads now, and those that golden cases expect."""
import json
import os
import pathlib
import re
import subprocess

ROOT = pathlib.Path(os.environ["CODETRACE_ROOT"])
SCHEMA = json.loads((ROOT / "share/codetrace.schema.json").read_text())


def document_of(trace):
    """None when the tool refuses the file."""
    run = subprocess.run([os.environ["CODETRACE_BINARY"], "-J", trace],
                         stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
    if run.returncode not in (0, 1):
        raise AssertionError(f"{trace}: status {run.returncode}")
    return json.loads(run.stdout) if run.returncode == 0 else None


def traces(folder, pattern="*"):
    """Each file that is a trace: its name and document."""
    for path in sorted((ROOT / folder).glob(pattern)):
        document = document_of(path)
        if document is not None:
            yield path.name, document


def _sections(text):
    parts = re.split(r"^== (.*)\n", text, flags=re.MULTILINE)
    return dict(zip(parts[1::2], parts[2::2]))


def _bytes_of(expected):
    """What the lines of an expected section stand for; see tests/cli/README.md."""
    def meaning(match):
        escape = match[1]
        if escape[:1] == b"x":
            return bytes([int(escape[1:], 16)])
        return {b"\\": b"\\", b"s": b" ", b"t": b"\t", b"\n": b""}[escape]
    return re.sub(rb"\\(x[0-9a-fA-F]{2}|[\\st\n])", meaning, expected.encode())


def golden_cases():
    """Each case that prints JSON: its name and document."""
    for path in sorted((ROOT / "tests/cli").glob("*.case")):
        sections = _sections(path.read_text())
        options = [word for word in sections["command"].split() if re.fullmatch("-[A-Z]+", word)]
        if not any("J" in word for word in options) or sections.get("status", "0").strip() != "0":
            continue
        outputs = b"".join(_bytes_of(content) for name, content in sections.items()
                           if name == "stdout" or name.startswith("output "))
        found = re.findall(rb"^\{\n.*?^\}\n\n", outputs, flags=re.MULTILINE | re.DOTALL)
        if len(found) != 1:
            raise AssertionError(f"{path.name}: {len(found)} documents instead of one")
        yield path.name, json.loads(found[0])


class Outline:
    """Leaves out nodes, functions and classes that differ from earlier ones in nothing but texts,
    numbers and how often a value stands in an array: a validator has nothing new to say about them.
    A real trace has some hundred shapes in tens of thousands of nodes."""

    def __init__(self):
        self._seen = set()

    def of(self, document):
        return {key: [item for index, item in enumerate(items)
                      if self._is_new(key, item) or (key, index) == ("cp", 0)]
                for key, items in document.items()}

    def _is_new(self, key, item):
        name = (item.get("name"), item.get("op")) if key == "cp" else None
        shape = key, name, re.sub("[0-9]", "0", item.get("ts", "")), self._shape(item)
        if shape in self._seen:
            return False
        self._seen.add(shape)
        return True

    def _shape(self, value):
        if isinstance(value, dict):
            if isinstance(value.get("array"), dict):
                content = frozenset(map(self._shape, value["array"].values()))
                others = {key: part for key, part in value.items() if key != "array"}
                return "map", content, self._shape(others)
            return frozenset((key, self._shape(part)) for key, part in value.items())
        if isinstance(value, list):
            return "list", frozenset(map(self._shape, value))
        if isinstance(value, (int, float)) and not isinstance(value, bool):
            return type(value), value == 0, value < 0, abs(value) >= 2**31
        return value if value in (None, True, False) else "text"
