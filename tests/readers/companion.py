# SPDX-License-Identifier: MIT
"""What the checks in Python share: what the companion says, and a line for each check that passed. A script
is called with the companion and the traces, and the first check that fails ends it with what was wrong."""
import json
import pathlib
import subprocess
import sys
import tempfile


def output(*command, may_find_nothing=False):
    """The lines that a program prints. Not splitlines, which takes U+2028 for the end of a line too."""
    run = subprocess.run(command, stdout=subprocess.PIPE, check=False)
    if run.returncode not in (0, may_find_nothing):
        sys.exit(f"{command} ended with status {run.returncode}")
    return run.stdout.decode().replace("\r\n", "\n").split("\n")[:-1]


def rows(tool, trace, query):
    """The rows of a query, as dictionaries."""
    return [json.loads(line) for line in output(tool, "sql", trace, "--format", "jsonl", query, may_find_nothing=True)]


def export(tool, trace, path, form, *options):
    """Writes the trace in a format to that path, which it returns."""
    output(tool, "export", trace, "--to", form, "-o", path, *options)
    return path


def passed(reader, trace, text):
    print(f"ok  {reader:24} {pathlib.Path(trace).name:16} {text}", flush=True)


def for_each_trace(check):
    """Calls check(tool, trace, folder) for those of the command line."""
    tool, *traces = sys.argv[1:]
    for trace in traces:
        with tempfile.TemporaryDirectory(prefix="codetrace-readers-") as folder:
            check(tool, trace, pathlib.Path(folder))
