#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What cttool response says, worked out once more from the JSON document of the reader.

response_test.py CODETRACE CTTOOL MAKE_RANDOM_TRACES TRACE...: on each trace and on 50 random ones.
"""
import base64
import json
import pathlib
import subprocess
import sys
import tempfile


def run(*command):
    """Status, output and messages."""
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
    return done.returncode, done.stdout, done.stderr.decode()


def expected_headers(nodes):
    """The headers in force when they were sent, as ids of their nodes."""
    force = []
    for node in nodes:
        if node["name"] == "SAPI_SEND_HEADERS":
            break
        if node["name"] != "SAPI_HEADER" or "op" not in node:
            continue
        header = node.get("header", {})
        if not isinstance(header, dict):
            continue  # the record is damaged: it has no line
        line = header.get("string", "")
        name = line.split(":")[0].strip().lower()
        named = [item for item in force if item[1] == name and item[2]]
        if node["op"] in ("REPLACE", "ADD"):
            if line.lower().startswith("http/") or "header" not in node:
                continue
            if node["op"] == "REPLACE" and ":" in line:
                force = [item for item in force if item not in named]
            force.append((node["id"], name, ":" in line))
        elif node["op"] == "DELETE":
            force = [item for item in force if item not in named]
        elif node["op"] == "DELETE ALL":
            force = []
    return [item[0] for item in force]


def check(path, document, cttool):
    """The whole answer of one trace; the body, if there is one."""
    nodes = document["cp"]
    writes = [node for node in nodes if node["name"] == "SAPI_WRITE"]
    status, text, _ = run(cttool, "response", path, "--format", "json")
    said = json.loads(text)
    headers = [node for node in nodes if node["name"] == "SAPI_HEADER"]
    sent = [node for node in nodes if node["name"] == "SAPI_SEND_HEADERS"]
    assert status == (0 if writes or headers or sent else 1), (path, status)
    assert [header["id"] for header in said["headers"]] == expected_headers(nodes), path
    assert [step["id"] for step in said["operations"]] == [node["id"] for node in headers], path
    if sent:
        assert said["sent_by"] == sent[0]["id"] and said["status"] == sent[0]["code"], path
        assert said["sent_again"] == [node["id"] for node in sent[1:]], path
    assert [write["id"] for write in said["writes"]] == [node["id"] for node in writes], path
    bodies = [node.get("body", {}) for node in writes]
    bodies = [body if isinstance(body, dict) else {"string": body} for body in bodies]
    sizes = [body.get("orig_sz") for body in bodies]
    for write, size in zip(said["writes"], sizes):
        assert size is None or write["size"] == size, (path, write)
    assert said["bytes_out"] == sum(write["size"] for write in said["writes"]), path
    assert said["bytes_recorded"] == sum(write["recorded"] for write in said["writes"]), path

    status, body, errors = run(cttool, "response", path, "--body")
    assert len(body) == said["bytes_recorded"], path
    cut = [write for write in said["writes"] if write["size"] != write["recorded"]]
    assert errors.count(" is cut: ") == len(cut), (path, errors)
    if "body_base64" in said:
        assert base64.b64decode(said["body_base64"]) == body, path
    else:
        assert said["body"].encode() == body, path
        assert said["body"] == "".join(text.get("string", "") for text in bodies), path
    return said, body


def check_blame(path, said, body, cttool):
    """Texts of the body are found where they are, also across writes."""
    places = [write["offset"] for write in said["writes"][1:] if 3 < write["offset"] < len(body) - 3]
    gaps = {write["offset"] + write["recorded"] for write in said["writes"]
            if write["size"] != write["recorded"]}
    for place in places[::max(1, len(places) // 4)]:
        wanted = body[place - 3:place + 3]
        try:
            text = wanted.decode()
        except UnicodeDecodeError:
            continue
        if "\0" in text or any(place - 3 < gap < place + 3 for gap in gaps):
            continue
        status, answer, _ = run(cttool, "response", path, f"--blame={text}", "--limit", "0",
                                "--format", "json")
        found = json.loads(answer)["found"]
        assert status == 0 and found["text"] == text, (path, text)
        offsets = [match["offset"] for match in found["body"]]
        assert all(body[offset:offset + 6] == wanted for offset in offsets), (path, text)
        assert len(offsets) == found["in_body"] <= body.count(wanted) or gaps, (path, text)
        if not gaps:
            assert len(offsets) == body.count(wanted), (path, text, offsets)
        starts = {write["id"]: write for write in said["writes"]}
        for match in found["body"]:
            first, last = starts[match["first_write"]], starts[match["last_write"]]
            assert first["offset"] <= match["offset"] < first["offset"] + first["recorded"]
            assert last["offset"] < match["offset"] + 6 <= last["offset"] + last["recorded"]


def main():
    codetrace, cttool, make_random, *traces = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([make_random, folder, "50", "11"], check=True)
        paths = sorted(map(str, pathlib.Path(folder).iterdir()))
        assert len(paths) == 50, paths
        for path in traces + paths:
            document = json.loads(run(codetrace, "-J", path)[1])
            check_blame(path, *check(path, document, cttool), cttool)
    print(f"{len(traces)} traces and {len(paths)} random ones")


if __name__ == "__main__":
    main()
