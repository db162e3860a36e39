#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""No secret that stands anywhere in a trace stands in what cttool redact makes of it, in any encoding, and
nothing else is gone.

redact_test.py CODETRACE CTTOOL MAKE_SECRET_TRACES LOGIN_TRACE TRACE...

CODETRACE_REDACT_SEEDS is how many traces with secrets are made: 300 is the whole size.
"""
import base64
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import urllib.parse

SEEDS = int(os.environ.get("CODETRACE_REDACT_SEEDS", "6"))
MASK = re.compile(rb"\[secret:[0-9a-f]{8}\]")


def run(*command):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
    return done.returncode, done.stdout, done.stderr


def spellings(secret):
    """Every form in which a secret could be read in a file or in an output."""
    text = secret.decode("utf-8")
    found = {secret}
    for ascii_only in (True, False):
        escaped = json.dumps(text, ensure_ascii=ascii_only)[1:-1]
        found |= {escaped.encode(), escaped.replace("/", "\\/").encode()}
    found |= {urllib.parse.quote_plus(text, safe=safe).encode() for safe in ("", "~", "*!")}
    found |= {urllib.parse.quote(text, safe=safe).encode() for safe in ("", "/", "!'()*")}
    found |= {form.replace(b"~", b"%7E") for form in found}
    found |= {re.sub(rb"%..", lambda code: code.group().lower(), form) for form in set(found)
              if b"%" in form}
    html = text.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;")
    found |= {html.replace('"', "&quot;").encode(),
              html.replace('"', "&quot;").replace("'", "&#039;").encode()}
    for before in range(3):
        # Characters of which all bits belong to the secret.
        coded = base64.b64encode(bytes(before) + secret)
        whole = coded[(before * 8 + 5) // 6:(before + len(secret)) * 8 // 6]
        found |= {whole, whole.replace(b"+", b"-").replace(b"/", b"_")}
    return {form for form in found if len(form) >= 6}


def outputs(codetrace, trace):
    """The bytes of a trace, and what prints them."""
    yield "bytes", pathlib.Path(trace).read_bytes()
    for option in ("-T", "-J", "-D"):
        yield option, run(codetrace, option, trace)[1]
    # The text column of the hex view, as one text.
    lines = run(codetrace, "-B", trace)[1].splitlines()
    yield "-B", b"".join(line[-16:] for line in lines)


def shape(cttool, trace):
    """What has to be the same: nodes with times, memory, kinds, depths and names of functions."""
    query = ("select id, parent, last, depth, kind, outcome, start_ns, total_ns, memory, memory_delta, line"
             " from nodes; select id, name, arg_count, builtin, outcome from calls;"
             " select name, calls, own_ns, builtin from functions; select name from classes;"
             " select code from sent; select operation from headers; select number from errors")
    status, out, err = run(cttool, "sql", trace, query, "--format", "json")
    assert status == 0, (trace, err)
    return json.loads(out)


def redact(cttool, trace, out, *options):
    status, report, err = run(cttool, "redact", trace, "-o", out, "--format", "json", *options)
    assert status == 0, (trace, err)
    return json.loads(report)


def check_secrets(codetrace, cttool, maker, folder, key):
    leaks = []
    run(maker, folder, "1", str(SEEDS))
    places = set()
    for seed in range(1, SEEDS + 1):
        trace, out = f"{folder}/{seed}.ct", f"{folder}/{seed}.out.ct"
        report = redact(cttool, trace, out, "--key", key)
        found = dict(outputs(codetrace, out))
        for line in pathlib.Path(f"{folder}/{seed}.txt").read_text().splitlines():
            place, secret = line.rsplit(" ", 1)
            secret = bytes.fromhex(secret)
            places.add(place)
            before = pathlib.Path(trace).read_bytes()
            assert place in NUMBERS or any(form in before for form in spellings(secret)), place
            for form in spellings(secret):
                where = [name for name, text in found.items() if form in text]
                where += ["report"] if form in json.dumps(report).encode() else []
                if where:
                    leaks.append((seed, place, form, where))
        before, after = shape(cttool, trace), shape(cttool, out)
        check_same_nodes(trace, before, after)
    assert not leaks, "\n".join(map(str, leaks[:40]))
    assert len(places) >= 40, len(places)
    return len(places)


NUMBERS = {"number", "card as number"}  # stored in eight bytes


def results(document):
    return document["results"] if "results" in document else document


def check_same_nodes(trace, before, after):
    """But for names in which a secret stood."""
    assert len(json.dumps(after)) > 100, trace
    for one, other in zip(results(before), results(after)):
        assert len(one["rows"]) == len(other["rows"]), trace
        for row, copy in zip(one["rows"], other["rows"]):
            cells = row.values() if isinstance(row, dict) else row
            copies = copy.values() if isinstance(copy, dict) else copy
            for cell, now in zip(cells, copies):
                if isinstance(now, str) and MASK.search(now.encode()):
                    continue
                assert cell == now, (trace, row, copy)


def check_traces(codetrace, cttool, folder, key, traces, strict):
    for trace in traces:
        out, again = f"{folder}/copy.ct", f"{folder}/again.ct"
        options = ["--strict"] if strict else []
        redact(cttool, trace, out, "--key", key, *options)
        check_same_nodes(trace, shape(cttool, trace), shape(cttool, out))
        if not run(codetrace, "-S", trace)[2]:
            assert not run(codetrace, "-S", out)[2], trace
        redact(cttool, trace, again, "--key", key, *options)
        assert pathlib.Path(out).read_bytes() == pathlib.Path(again).read_bytes(), trace


def check_login(codetrace, cttool, maker, text, folder, key):
    """What a support engineer would not want to find."""
    trace, out = f"{folder}/login.ct", f"{folder}/login.out.ct"
    assert run(maker, "--text", text, trace)[0] == 0
    redact(cttool, trace, out, "--key", key)
    secrets = re.findall(r"^# secret: (.*)$", pathlib.Path(text).read_text(), re.M)
    kept = re.findall(r"^# kept: (.*)$", pathlib.Path(text).read_text(), re.M)
    assert len(secrets) >= 15 and len(kept) >= 5
    before = pathlib.Path(trace).read_bytes()
    found = dict(outputs(codetrace, out))
    for secret in secrets:
        assert secret.encode() in before, secret
        for form in spellings(secret.encode()):
            where = [name for name, printed in found.items() if form in printed]
            assert not where, (secret, form, where)
    for word in kept:
        assert word.encode() in found["bytes"], word
    # One password, one mask; another key, another mask.
    other = f"{folder}/other.ct"
    pathlib.Path(f"{folder}/other.key").write_bytes(b"another")
    redact(cttool, trace, other, "--key", f"{folder}/other.key")
    masks, others = (set(MASK.findall(pathlib.Path(name).read_bytes())) for name in (out, other))
    assert len(masks) == len(others) and not masks & others
    redact(cttool, trace, out)
    first = pathlib.Path(out).read_bytes()
    redact(cttool, trace, out)
    assert first != pathlib.Path(out).read_bytes(), "without a key masks are those of one run"


def main():
    codetrace, cttool, maker, login, *traces = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder:
        key = f"{folder}/key"
        pathlib.Path(key).write_bytes(b"a key of the tests")
        places = check_secrets(codetrace, cttool, maker, f"{folder}/secrets", key)
        check_login(codetrace, cttool, maker, login, folder, key)
        for strict in (False, True):
            check_traces(codetrace, cttool, folder, key, traces, strict)
        print(f"{SEEDS} traces with secrets at {places} kinds of place, {len(traces)} others")


main()
