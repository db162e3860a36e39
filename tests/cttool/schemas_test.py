#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Every JSON document of cttool keeps to the schema of its verb, and the schemas are no wider.

schemas_test.py CTTOOL SHARE TRACE...: each verb's schema is SHARE/cttool-VERB.schema.json.
"""
import copy
import json
import pathlib
import subprocess
import sys

from jsonschema import Draft202012Validator

# A verb, and options with which it prints one document. Operands behind the trace stand first.
DOCUMENTS = [
    ("summary",),
    ("top", "--limit", "0"),
    ("top", "--of", "line", "--by", "memory"),
    ("top", "--of", "folder", "--user"),
    ("tree",),
    ("tree", "--limit", "20", "--values", "full"),
    ("tree", "--only", "/e/", "--no-builtin", "--values", "none"),
    ("calls",),
    ("calls", "/e/", "--path", "--limit", "50"),
    ("calls", "no::such"),
    ("show", "0"),
    ("show", "1", "--source"),
    ("show", "7", "--source"),
    ("response",),
    ("response", "--blame"),
    ("response", "--blame", "e"),
    ("sql", "select * from request; select * from calls limit 30; select 1.5, null, x'00ff'"),
    ("sql", "select * from errors where 0"),
    ("check",),
    ("check", "--level", "fatal"),
    ("redact", "-o", "/dev/null", "--value", "autoload"),
    ("redact", "-o", "/dev/null", "--strict"),
    ("salvage", "-o", "/dev/null"),
]
# A verb, and options with which it prints documents that are a list of the one above, a line each.
LINES = [
    ("calls", "calls", "--format", "jsonl"),
    ("check", "files", "--format", "jsonl"),
]
# A verb, and options with which it prints a record a line, each of them described by the schema.
RECORDS = [
    ("export", "--to", "jsonl"),
    ("export", "--to", "jsonl", "--values", "short"),
    ("export", "--to", "jsonl", "--values", "none", "--no-builtin"),
]
# Texts that stand for a kind of thing, not for what a trace says.
WORDS = {"kind", "outcome", "by", "of", "schema"}


def run(cttool, trace, verb, *options):
    """Standard output; nothing for a node that a trace does not have."""
    done = subprocess.run([cttool, verb, trace, *options], stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, check=False)
    assert done.returncode in (0, 1), (verb, options, trace, done.returncode)
    return done.stdout


def shape(value, key=None):
    """Equal for values that differ in nothing but texts, numbers and how long lists are."""
    if isinstance(value, dict):
        return frozenset((name, shape(part, name)) for name, part in value.items())
    if isinstance(value, list):
        return "list", frozenset(shape(part) for part in value)
    if isinstance(value, str):
        return value if key in WORDS else "text"
    if value is None or isinstance(value, bool):
        return value
    return type(value), value == 0, value < 0


def outline(document):
    """The document with one item of each shape in each list: more of them prove nothing."""
    kept = dict(document)
    for key, items in document.items():
        if isinstance(items, list):
            kept[key] = list({shape(item): item for item in items}.values())
    return kept


def faults(validator, document):
    return [f"{error.json_path}: {error.message[:300]}" for error in validator.iter_errors(document)]


def objects(value, schema, root):
    """Each object of a document that a schema describes, as a way down to it."""
    while "$ref" in schema:
        schema = root["$defs"][schema["$ref"].removeprefix("#/$defs/")]
    for branch in schema.get("anyOf", []):
        if branch.get("type") == "object" and isinstance(value, dict):
            yield from objects(value, branch, root)
    if isinstance(value, dict) and "properties" in schema:
        yield ()
        for key, part in value.items():
            for way in objects(part, schema["properties"][key], root):
                yield (key, *way)
    elif isinstance(value, list) and "items" in schema:
        for place, part in enumerate(value[:3]):
            for way in objects(part, schema["items"], root):
                yield (place, *way)


def check_strict(validator, document):
    """A key more is a fault anywhere, one less is, and no figure may be a text. Counts them."""
    optional = {"source", "path", "this", "args", "returned", "thrown", "found", "body_base64"}
    changes = 0
    for way in objects(document, validator.schema, validator.schema):
        target = document
        for step in way:
            target = target[step]
        for key in ["a key that nobody knows", *target]:
            changed = copy.deepcopy(document)
            place = changed
            for step in way:
                place = place[step]
            if key not in target:
                place[key] = None
            elif key in optional:
                continue
            elif isinstance(target[key], int) and not isinstance(target[key], bool):
                place[key] = str(target[key])
            else:
                del place[key]
            assert faults(validator, changed), (way, key)
            changes += 1
    return changes


def check_record(validator, record):
    """It keeps to the schema; a key more is a fault, a figure less is, and no figure may be a text."""
    found = faults(validator, record)
    assert not found, (record, found[:3])
    assert faults(validator, {**record, "a key that nobody knows": None}), record
    for key, value in record.items():
        if key.endswith("_ns") or key in ("id", "depth", "open", "nodes"):
            assert faults(validator, {name: record[name] for name in record if name != key}), key
        if isinstance(value, int) and key not in ("this", "returned", "thrown"):
            assert faults(validator, {**record, key: str(value)}), (record, key)


def main():
    cttool, share, *traces = sys.argv[1:]
    validators = {}
    for path in pathlib.Path(share).glob("cttool-*.schema.json"):
        schema = json.loads(path.read_text(encoding="utf-8"))
        Draft202012Validator.check_schema(schema)
        validators[path.name.split("-")[1].split(".")[0]] = Draft202012Validator(schema)
    verbs = {verb for verb, *_ in DOCUMENTS + LINES + RECORDS}
    assert verbs == validators.keys(), (verbs, validators.keys())
    count = changes = 0
    strict = set()
    for trace in traces:
        for verb, *options in DOCUMENTS:
            said = run(cttool, trace, verb, *options, "--format", "json")
            if not said:
                assert verb == "show", (verb, options, trace)
                continue
            document = json.loads(said)
            named = document["files"][0] if verb == "check" else document
            assert document["schema"] == f"cttool.{verb}/1" and named["trace"] == trace, trace
            document = outline(document)
            found = faults(validators[verb], document)
            assert not found, (trace, verb, options, found[:3])
            count += 1
            if (verb, *options) not in strict:
                strict.add((verb, *options))
                changes += check_strict(validators[verb], document)
        for verb, key, *options in LINES:
            lines = [json.loads(line) for line in run(cttool, trace, verb, *options).splitlines()]
            assert lines, (trace, verb)
            document = outline({"schema": f"cttool.{verb}/1", "trace": trace, key: lines})
            if verb == "check":
                del document["trace"]
            found = faults(validators[verb], document)
            assert not found, (trace, verb, options, found[:3])
            count += 1
        for verb, *options in RECORDS:
            lines = [json.loads(line) for line in run(cttool, trace, verb, *options).splitlines()]
            assert lines[0]["schema"] == f"cttool.{verb}/1" and lines[0]["trace"] == trace, trace
            for record in {shape(line): line for line in lines}.values():
                check_record(validators[verb], record)
            count += 1
    assert count >= len(traces) * len(LINES) and changes > 100, (count, changes)
    print(f"{count} documents, {changes} changed ones")


if __name__ == "__main__":
    main()
