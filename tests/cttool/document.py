# SPDX-License-Identifier: MIT
"""The JSON document of the reader, for tests that work out what cttool must say."""
import subprocess

CUT = "**CUT**"
SPANS = {"STARTUP", "FUNCTION_CALL", "INCLUDE_CALL", "SAPI_WRITE"}


class AnyText:
    """Stands for a value that the document does not tell in full."""

    def __eq__(self, other):
        return True


def output(*command):
    """The output of a program that may find nothing, but not fail."""
    run = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
    assert run.returncode in (0, 1), (command, run.returncode)
    return run.stdout


def plain_key(key):
    """The text of a key of the document, which has texts in quotes; None for odd ones."""
    for quoted, end in ((key, '"'), (key.removesuffix(CUT), '"')):
        if len(quoted) >= 2 and quoted[0] == end == quoted[-1]:
            return quoted[1:-1] + key[len(quoted):]
    return key if key.lstrip("-").isdigit() else None


def plain(value, classes):
    """A value of the document in plain JSON."""
    if not isinstance(value, dict):
        return value
    if "string" in value:
        return value["string"] + (CUT if "orig_sz" in value else "")
    if "array" in value:
        cut = value.get("cut", False)
        if isinstance(value["array"], list):
            return [plain(item, classes) for item in value["array"]] + ([CUT] if cut else [])
        members = {}
        for key, item in value["array"].items():
            key = plain_key(key)
            # Of equal keys the last one counts, but the document is sorted.
            members[key] = AnyText() if key in members else plain(item, classes)
        if cut:
            members[CUT] = True
        return members
    if "resource" in value:
        return {"resource": value["resource"], "handle": value["handle"]}
    if "class" in value:
        return {"class": classes[value["class"]], "handle": value["handle"]}
    return value


def same(expected, said):
    """Whether two values are equal, as far as the document tells."""
    if isinstance(expected, AnyText):
        return True
    if isinstance(expected, list):
        return (isinstance(said, list) and len(expected) == len(said) and
                all(map(same, expected, said)))
    if isinstance(expected, dict):
        if not isinstance(said, dict):
            return False
        # Keys that PHP cannot make differ, and may meet others.
        if None in expected:
            return True
        # Undef is null in a map, but missing in the document.
        for key, value in said.items():
            if key in expected:
                if not same(expected[key], value):
                    return False
            elif value is not None:
                return False
        return expected.keys() <= said.keys()
    if expected is None:
        return said in (None, "NaN", "Infinity", "-Infinity")
    if isinstance(expected, bool) or isinstance(said, bool):
        return expected is said
    # The document writes a large double like a long.
    if isinstance(said, float) and isinstance(expected, int):
        return float(expected) == said
    return expected == said


def names_of(document):
    """The names of the functions, with their classes."""
    classes = [entry["name"] for entry in document["cl"]]
    names = []
    for function in document["fn"]:
        owner = function.get("class")
        if isinstance(owner, int):
            owner = classes[owner]
        elif isinstance(owner, dict):
            owner = owner["name"]
        names.append(f'{owner}::{function["name"]}' if owner is not None else function["name"])
    return names, classes
