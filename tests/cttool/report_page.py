# SPDX-License-Identifier: MIT
"""A reader of the pages of cttool report, made from the description of their blocks."""
import base64
import json
import re
import zlib

KINDS = ["request", "call", "include", "write", "flush", "header", "send_headers", "exit", "error",
         "event"]
OUTCOMES = [None, "ended", "threw", "open"]
HAS_MEMORY, HAS_DELTA, UNTIMED, END_UNTIMED, MOVED, HAS_VALUES = 4, 8, 16, 32, 64, 128
FIXED = ["meta", "summary", "response", "functions", "labels", "files", "classes", "nodes-id",
         "nodes-kind",
         "nodes-flags", "nodes-depth", "nodes-name", "nodes-start", "nodes-total", "nodes-memory",
         "nodes-growth", "nodes-file", "nodes-line"]
NO_CALL = 64


def unpacked(text):
    stream = zlib.decompressobj()
    data = stream.decompress(base64.b64decode(text, validate=True)) + stream.flush()
    assert stream.eof and not stream.unused_data and not stream.unconsumed_tail
    return data


def numbers(data):
    """LEB128 without sign."""
    found, number, shift = [], 0, 0
    for byte in data:
        number |= (byte & 0x7F) << shift
        shift += 7
        if byte < 0x80:
            assert number < 2**64 and shift <= 70
            found.append(number)
            number, shift = 0, 0
    assert shift == 0, "the last number has an end"
    return found


def signed(data):
    return [number >> 1 ^ -(number & 1) for number in numbers(data)]


def sums(differences, before=0):
    """Numbers from their differences, which wrap."""
    found = []
    for difference in differences:
        before += difference
        found.append(before)
    return found


def varint(data, at):
    """A number in LEB128, and where it ends."""
    number, shift = 0, 0
    while True:
        number |= (data[at] & 0x7F) << shift
        shift += 7
        at += 1
        if data[at - 1] < 0x80:
            return number, at


class CallReader:
    """Values of a call in the few bytes that ct_call_bytes.h describes."""

    def __init__(self, data, classes):
        self.data, self.at, self.classes = data, 0, classes

    def number(self):
        number, self.at = varint(self.data, self.at)
        return number

    def taken(self, size):
        self.at += size
        assert self.at <= len(self.data)
        return self.data[self.at - size:self.at]

    def value(self, depth=0):
        code = self.taken(1)[0]
        if code < 3:
            return [None, False, True][code]
        if code == 3:
            return json.loads(self.taken(self.taken(1)[0]).decode("ascii"))
        if code < 8:
            text = self.taken(self.number()).decode("utf-8" if code % 2 else "ascii")
            return text.removeprefix("\ufeff") + ("**CUT**" if code > 5 else "")
        if code == 8:
            assert depth < 32
            return self.array(depth + 1)
        if code == 9:
            number = self.number()
            name = {"class": self.classes[number - 1]} if number else {}
            return {**name, "handle": self.number()}
        if code == 10:
            return {"resource": self.value(), "handle": self.value()}
        assert code == 13 and depth, code
        return ["**CUT**"]

    def array(self, depth):
        keys, values = [], []
        for place in range(self.number()):
            code = self.data[self.at]
            if code == 12:
                self.at += 1
                break
            if code == 11:
                self.at += 1
            keys.append(place if code == 11 else str(self.value()))
            values.append(self.value(depth))
        else:
            code = None
        if all(isinstance(key, int) for key in keys):
            return values + (["**CUT**"] if code == 12 else [])
        return {**dict(zip(map(str, keys), values)), **({"**CUT**": True} if code == 12 else {})}


class Page:
    """What is in a report. `nodes` are dicts in the manner of export's jsonl."""

    def __init__(self, data, built):
        lines = data.split(b"\n")
        mark = b'<script type="application/octet-stream" id="'
        blocks = [line for line in lines if line.startswith(mark)]
        around = b"\n".join(line for line in lines if not line.startswith(mark))
        assert around == built.replace(b"<!-- data -->\n", b""), "the page itself is as it was built"
        self.size = len(data)
        self.raw = {}
        for block in blocks:
            match = re.fullmatch(rb'([a-z0-9-]+)">([A-Za-z0-9+/]*=*)</script>',
                                 block.removeprefix(mark))
            assert match, block[:80]
            name = match[1].decode()
            assert name not in self.raw, name
            self.raw[name] = unpacked(match[2])
        (self.meta, self.summary, self.response, self.functions, self.labels, self.files,
         self.classes) = (json.loads(self.raw[name]) for name in FIXED[:7])
        there = [number for number, count in enumerate(self.meta["blocks"]) if count > 0]
        assert list(self.raw) == FIXED + [f"values-{number}" for number in there], list(self.raw)
        for texts in (self.labels, self.files, self.classes):
            assert all(isinstance(text, str) for text in texts)
        assert len({len(column) for column in self.functions.values()}) == 1
        self.nodes = self.read_nodes()
        self.lines = 0  # entries that are JSON
        self.read_values()

    def read_nodes(self):
        raw = {name.removeprefix("nodes-"): self.raw[name] for name in FIXED[7:]}
        ids = sums(numbers(raw["id"]), -1)
        count = len(ids)
        depths = sums(signed(raw["depth"]))
        names, totals, files = (numbers(raw[key]) for key in ("name", "total", "file"))
        starts = sums(signed(raw["start"]))
        assert count == len(raw["kind"]) == len(raw["flags"]) == self.meta["nodes"]
        assert {count} == set(map(len, (depths, names, totals, files, starts))), count
        memory, growth = iter(sums(signed(raw["memory"]))), iter(signed(raw["growth"]))
        line = iter(sums(signed(raw["line"])))
        nodes, around = [], []
        for place in range(count):
            flags = raw["flags"][place]
            node = {"id": ids[place], "kind": KINDS[raw["kind"][place]], "depth": depths[place],
                    "flags": flags, "start_ns": starts[place], "total_ns": totals[place],
                    "outcome": OUTCOMES[flags & 3], "name": names[place],
                    "memory": next(memory) % 2**64 if flags & HAS_MEMORY else None,
                    "memory_delta": next(growth) if flags & HAS_DELTA else None,
                    "file": self.files[files[place] - 1] if files[place] else None,
                    "line": next(line) if files[place] else None}
            assert 0 <= node["depth"] <= len(around) and node["start_ns"] >= 0
            del around[node["depth"]:]
            node["parent"] = around[-1] if around else None
            around.append(node["id"])
            nodes.append(node)
        assert not list(memory) and not list(growth) and not list(line)
        return nodes

    def entry(self, data, at):
        """The values that an entry has, and where it ends."""
        if data[at] == ord("{"):
            end = data.index(b"\n", at)
            self.lines += 1
            return json.loads(data[at:end].decode()), end + 1
        parts = data[at]
        size, at = varint(data, at + 1)
        end = at + size
        call = CallReader(data[at:end], self.classes)
        values = {}
        if parts & 1:
            values["this"] = call.value()
        values["args"] = [call.value() for _ in range(call.number())]
        assert parts < 6, parts
        if parts & 6:
            values["returned" if parts & 2 else "thrown"] = call.value()
        assert call.at == size, "no byte is left"
        return values, end

    def read_values(self):
        """Gives each node its `values`; None for those that were left out."""
        def class_of(node):
            return node["total_ns"].bit_length() if node["kind"] == "call" else NO_CALL
        self.order = sorted((node for node in self.nodes if node["flags"] & HAS_VALUES),
                            key=lambda node: (-class_of(node), node["id"]))
        place, left_out = 0, []
        for number, count in enumerate(self.meta["blocks"]):
            nodes = self.order[place:place + abs(count)]
            assert count != 0 and len(nodes) == abs(count), (number, count)
            place += abs(count)
            if count < 0:
                left_out += nodes
                continue
            data = self.raw[f"values-{number}"]
            assert len(data) <= 128 * 1024 or count == 1, (number, len(data))
            at = 0
            for node in nodes:
                node["values"], at = self.entry(data, at)
            assert at == len(data), (number, at)
        assert place == len(self.order)
        said = self.meta["left_out"]
        assert said["nodes"] == len(left_out), said
        assert said["longest_ns"] == max((node["total_ns"] for node in left_out), default=0), said
        assert self.size <= said["max_size"]
