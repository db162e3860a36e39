# SPDX-License-Identifier: MIT
"""Plain readers of what cttool export writes: each takes the bytes, wants them well-formed, and gives
back what they say, in terms of nodes, functions and nanoseconds."""
import collections
import decimal
import json
import re

MOST = 2**63 - 1
OPEN = " (never ended)"


def pairs_once(pairs):
    names = [name for name, _ in pairs]
    assert len(set(names)) == len(names), names
    return dict(pairs)


def no_constant(word):
    raise ValueError(word)


def json_of(data, **how):
    """A document of JSON as the standard has it: UTF-8, no key twice, no NaN."""
    return json.loads(data.decode(), object_pairs_hook=pairs_once, parse_constant=no_constant, **how)


def lines_of(data):
    """Lines that end where any reader would say so."""
    text = data.decode()
    assert text == "" or text.endswith("\n")
    assert text.splitlines() == text.split("\n")[:-1]
    return text.split("\n")[:-1]


class Speedscope:
    """The two profiles: of each span its frame, begin and end, in the order in which they begin."""

    def __init__(self, data):
        document = json_of(data)
        assert document["$schema"] == "https://www.speedscope.app/file-format-schema.json"
        self.document = document
        self.frames = document["shared"]["frames"]
        assert all(isinstance(frame["name"], str) and frame["name"] for frame in self.frames)
        times, memory = document["profiles"]
        assert (times["unit"], memory["unit"]) == ("nanoseconds", "bytes")
        self.times = self.spans_of(times)
        self.memory = self.spans_of(memory)

    def spans_of(self, profile):
        assert profile["type"] == "evented" and profile["startValue"] <= profile["endValue"]
        at = profile["startValue"]
        spans = []
        around = []
        for event in profile["events"]:
            assert isinstance(event["at"], int) and event["at"] >= at, (event, at)
            at = event["at"]
            if event["type"] == "O":
                around.append(len(spans))
                spans.append([event["frame"], at, None])
            else:
                span = spans[around.pop()]
                assert event["type"] == "C" and span[0] == event["frame"]
                span[2] = at
        assert not around and at == profile["endValue"]
        assert all(0 <= frame < len(self.frames) for frame, _, _ in spans)
        return spans


class Chrome:
    """The nodes: of each its begin and end in whole nanoseconds, and its args."""

    def __init__(self, data):
        document = json_of(data, parse_float=decimal.Decimal)
        self.origin = document["otherData"]
        self.nodes = {}
        self.names = {}
        self.counters = []
        around = []
        latest = 0
        kinds = collections.Counter()
        assert all(re.fullmatch(rb".*,\"ts\":\d+\.\d\d\d,.*", line)
                   for line in data.split(b"\n")[1:-2])
        for event in document["traceEvents"]:
            kinds[event["ph"]] += 1
            time = event["ts"] * 1000
            assert time == int(time) and isinstance(event["name"], str) and event["name"]
            time = int(time)
            if event["ph"] == "B":
                assert time >= latest
                latest = time
                around.append((event["name"], event["args"]["id"]))
                self.nodes[event["args"]["id"]] = [time, None, event["args"]]
                self.names[event["args"]["id"]] = event["name"]
            elif event["ph"] == "E":
                assert time >= latest
                latest = time
                name, node = around.pop()
                assert name == event["name"] and self.nodes[node][0] < time, event
                self.nodes[node][1] = time
            elif event["ph"] == "i":
                assert event["args"]["id"] not in self.nodes
                self.nodes[event["args"]["id"]] = [time, time, event["args"]]
                self.names[event["args"]["id"]] = event["name"]
            elif event["ph"] == "C":
                self.counters.append((time, event["args"]["bytes"]))
            else:
                assert event["ph"] == "M", event
        assert not around and kinds["B"] == kinds["E"] and kinds["M"] == 2


class Callgrind:
    """Functions by name and file, with own costs and arcs to others."""

    def __init__(self, data):
        lines = lines_of(data)
        head = lines[:lines.index("")] if "" in lines else lines
        assert b"\nevents: Time_ns Memory_growth Calls\n" in data[:2048]
        assert head[0] == "# callgrind format" and head[1] == "version: 1"
        assert sum(line.startswith("summary: ") for line in lines) == 1
        assert all(len(line) <= 1100 for line in head if line.startswith("cmd: "))
        self.summary = self.costs(head[-1].removeprefix("summary:"))
        self.names = {"fn": {}, "fl": {}}
        self.own = collections.defaultdict(lambda: [0, 0, 0])
        self.arcs = collections.defaultdict(lambda: [0, 0, 0])
        self.counts = collections.Counter()
        self.lines = {}
        position = {}
        rest = iter(lines[len(head):])
        for line in rest:
            if not line:
                continue
            if line.startswith("calls="):
                count, target = line.removeprefix("calls=").split(" ")
                place, *costs = map(int, next(rest).split(" "))
                arc = self.function(position), (position["cfn"], position["cfi"])
                assert int(count) > 0 and min(costs) >= 0 and int(target) >= 0 and place >= 0
                self.counts[arc] += int(count)
                self.add(self.arcs[arc], costs)
            elif "=" in line and not line[0].isdigit():
                key, name = line.split("=", 1)
                position[key] = self.name(key, name)
            else:
                place, *costs = map(int, line.split(" "))
                assert min(costs) >= 0
                self.lines[self.function(position)] = place
                self.add(self.own[self.function(position)], costs)

    @staticmethod
    def function(position):
        return position["fn"], position["fl"]

    @staticmethod
    def costs(text):
        costs = list(map(int, text.split()))
        assert len(costs) == 3 and min(costs) >= 0
        return costs

    @staticmethod
    def add(to, costs):
        for i, cost in enumerate(costs):
            to[i] = min(MOST, to[i] + cost)

    def name(self, key, text):
        """A name is told once, before it is used by its number alone."""
        known = self.names["fn" if key.endswith("fn") else "fl"]
        number, name = re.fullmatch(r"\((\d+)\)(?: (.+))?", text).groups()
        if name is None:
            return known[number]
        assert number not in known
        known[number] = name
        return name

    def inclusive(self):
        """What each function took with all that it called; the graph has no cycles."""
        after = collections.defaultdict(list)
        missing = collections.Counter()
        for caller, callee in self.arcs:
            after[callee].append(caller)
            missing[caller] += 1
        totals = {function: list(self.own[function]) for function in self.own}
        ready = [function for function in totals if not missing[function]]
        done = 0
        while ready:
            callee = ready.pop()
            done += 1
            for caller in after[callee]:
                self.add(totals[caller], self.arcs[caller, callee])
                missing[caller] -= 1
                if not missing[caller]:
                    ready.append(caller)
        assert done == len(totals), "a cycle"
        return totals


def folded(data):
    """The weights by stacks of names."""
    weights = collections.Counter()
    for line in lines_of(data):
        stack, weight = re.fullmatch(r"(.+) (\d+)", line).groups()
        frames = stack.split(";")
        assert all(frames), line
        weights[tuple(frames)] += int(weight)
    # A trace without any weight has one line.
    assert all(weights.values()) or len(weights) == 1
    return +weights


def jsonl(data):
    """What the first record says of the trace, and the records of nodes."""
    assert data.endswith(b"\n")
    first, *rows = [json_of(line) for line in data.split(b"\n")[:-1]]
    assert first["schema"] == "cttool.export/1"
    return first, rows


def exact(value):
    """A value of plain JSON as an export has it: whole numbers that a double cannot hold are texts."""
    if isinstance(value, list):
        return [exact(item) for item in value]
    if isinstance(value, dict):
        return {key: exact(item) for key, item in value.items()}
    if isinstance(value, int) and not isinstance(value, bool) and abs(value) > 2**53:
        return str(value)
    return value
