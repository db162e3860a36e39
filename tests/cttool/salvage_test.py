#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""cttool salvage as users run it: what it writes, what it says, and what it refuses.

salvage_test.py CODETRACE CTTOOL SCHEMA TRACE...
"""
import gzip
import json
import pathlib
import subprocess
import sys
import tempfile

from jsonschema import Draft202012Validator

HEADER = 36


def run(*command, data=None):
    return subprocess.run(command, input=data, capture_output=True, check=False)


class Salvage:
    def __init__(self, cttool, schema, work):
        self.cttool = cttool
        self.work = work
        self.validator = Draft202012Validator(json.loads(pathlib.Path(schema).read_text()))
        self.out = work / "out.ct"

    def file(self, name, data):
        path = self.work / name
        path.write_bytes(data)
        return path

    def mend(self, data, *options):
        """The document, and the mended trace."""
        broken = self.file("broken.ct", data)
        done = run(self.cttool, "salvage", broken, "-o", self.out, "--format", "json", *options)
        assert done.returncode == 0, done
        document = json.loads(done.stdout)
        assert not list(self.validator.iter_errors(document)), document
        assert not done.stderr, done.stderr
        mended = self.out.read_bytes()
        assert document["size"] == len(mended), document["size"]
        assert document["whole"] == (mended == data), document
        return document, mended

    def summary(self, path):
        done = run(self.cttool, "-v", "summary", path)
        assert done.returncode == 0, done
        return done.stdout.decode(), done.stderr.decode()


def sizes(trace):
    data = int.from_bytes(trace[12:16], "big")
    return HEADER + data, len(trace) - HEADER - data


def kinds(document):
    return {change["kind"]: change for change in document["changes"]}


def check_whole(salvage, trace):
    document, mended = salvage.mend(trace)
    assert mended == trace and document["whole"] and not document["changes"], document


def check_cut(salvage, trace):
    data_end, add_size = sizes(trace)
    for length in (HEADER + 300, data_end // 2, data_end - 1, data_end, data_end + add_size // 2):
        document, mended = salvage.mend(trace[:length])
        found = kinds(document)
        assert document["kept"] > 0 and found["section-missing"]["bytes"] == len(trace) - length
        out, err = salvage.summary(salvage.out)
        assert "not the last node" in err or not err, err
        if length <= data_end:
            assert document["names_invented"] > 0 and "unknown#" in out, out
        again, same = salvage.mend(mended)
        assert same == mended and again["whole"], again


def check_header(salvage, trace):
    data_end, _ = sizes(trace)
    for broken in (bytes(HEADER) + trace[HEADER:], trace[HEADER:]):
        document, mended = salvage.mend(broken)
        assert not document["has_header"], document
        facts = {fact["field"]: fact for fact in document["header"]}
        assert facts["orig_data"]["from"] == "content" and facts["orig_data"]["sure"] == "certain"
        assert int(facts["orig_data"]["value"], 16) == int.from_bytes(trace[20:28], "big"), facts
        assert int(facts["orig_add_data"]["value"], 16) == int.from_bytes(trace[28:36], "big"), facts
        assert mended[HEADER:] == trace[HEADER:] and document["dropped"] == 0
        assert sizes(mended)[0] == data_end
    wrong_sizes = trace[:12] + bytes(8) + trace[20:]
    _, mended = salvage.mend(wrong_sizes)
    assert mended == trace
    longer = trace + b"more than that"
    document, mended = salvage.mend(longer)
    assert mended == trace and kinds(document)["behind-trace"]["bytes"] == len(longer) - len(trace)


def check_hole(salvage, trace):
    data_end, _ = sizes(trace)
    begin = (HEADER + data_end) // 4
    document, _ = salvage.mend(trace[:begin] + bytes(50000) + trace[begin + 50000:])
    found = kinds(document)
    places = [place for place in document["places"] if place["kind"] == "unreadable"]
    assert len(places) == 1 and places[0]["bytes"] >= 49000, places
    assert begin - 3000 < places[0]["offset"] <= begin, (begin, places)
    assert found["begin-invented"]["count"] == document["invented"] > 0, found
    done = run(salvage.cttool, "calls", salvage.out, "unknown#call", "--count")
    assert done.returncode == 0 and done.stdout.strip() != b"0", done


def check_sections(salvage, codetrace, trace):
    """Sections in two files, as a recording leaves them that has not ended."""
    data_end, _ = sizes(trace)
    data = salvage.file("run.data", trace[HEADER:data_end - 10])
    add_data = salvage.file("run.add", trace[data_end:])
    done = run(salvage.cttool, "salvage", "--data", data, "--add-data", add_data, "-o", salvage.out)
    assert done.returncode == 0 and b"by the content" in done.stderr, done
    mended = salvage.out.read_bytes()
    assert mended[HEADER:HEADER + 5000] == trace[HEADER:HEADER + 5000]
    assert mended[-1000:] == trace[-1000:]
    done = run(codetrace, "-S", salvage.out)
    assert done.returncode == 0 and not done.stderr and not done.stdout, done


def check_manners(salvage, trace):
    broken = salvage.file("broken.ct", trace[:-1])
    tool = salvage.cttool
    done = run(tool, "salvage", broken, "-o", "-")
    assert done.returncode == 0 and done.stdout[:2] == b"CT", done.stderr
    assert b"kept" in done.stderr and b"wrote" not in done.stderr
    piped = run(tool, "salvage", "-", "-o", "-", data=gzip.compress(trace[:-1]))
    assert piped.stdout == done.stdout, piped.stderr
    salvage.out.write_bytes(b"before")
    refused = [
        (2, b"it is the Code Trace file itself", [broken, "-o", broken]),
        (2, b"cannot take both", [broken, "-o", "-", "--format", "json"]),
        (2, b"either FILE, or --data", ["-o", salvage.out]),
        (2, b"either FILE, or --data", [broken, "--data", broken, "-o", salvage.out]),
        (2, b"belong together", ["--data", broken, "-o", salvage.out]),
        (2, b"No such file", [salvage.work / "missing.ct", "-o", salvage.out]),
        (2, b"No space left on device", [broken, "-o", "/dev/full"]),
        (2, b"--output", [broken]),
        (1, b"there is no checkpoint in it", ["/dev/null", "-o", salvage.out]),
    ]
    for status, words, options in refused:
        done = run(tool, "salvage", *options)
        assert done.returncode == status and words in done.stderr, (options, done)
        assert salvage.out.read_bytes() == b"before", options
        assert broken.read_bytes() == trace[:-1], options
    hostile = salvage.file("a\x1b[31m.ct", trace[:-1])
    done = run(tool, "salvage", hostile, "-o", salvage.out)
    assert done.returncode == 0 and b"\x1b" not in done.stderr, done


def main():
    codetrace, cttool, schema, *traces = sys.argv[1:]
    with tempfile.TemporaryDirectory() as work:
        salvage = Salvage(cttool, schema, pathlib.Path(work))
        for name in traces:
            trace = pathlib.Path(name).read_bytes()
            check_whole(salvage, trace)
            check_cut(salvage, trace)
            check_header(salvage, trace)
            check_hole(salvage, trace)
            check_sections(salvage, codetrace, trace)
        check_manners(salvage, trace)


if __name__ == "__main__":
    main()
