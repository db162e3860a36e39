#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""csv_rows.py CTTOOL TRACE...: Python's csv reads every table, and each field is what SQL says."""
import csv
import json
import pathlib
import subprocess
import sys
import tempfile

TABLES = ("request", "nodes", "calls", "functions", "classes", "includes", "writes", "headers", "sent",
          "errors", "events", "repeats")


def as_text(value):
    if value is None:
        return ""
    if isinstance(value, bool):
        return str(int(value))
    return value if isinstance(value, str) else json.dumps(value)


def rows_of_query(tool, trace, table):
    said = subprocess.run([tool, "sql", trace, "--format", "json", f"select * from {table}"], check=False,
                          stdout=subprocess.PIPE).stdout
    result = json.loads(said)["results"][0]
    return [result["columns"]] + [[as_text(value) for value in row] for row in result["rows"]]


def check(tool, trace, folder):
    fields = 0
    for table in TABLES:
        path = folder / f"{table}.csv"
        subprocess.run([tool, "export", trace, "--to", "csv", "--table", table, "-o", path], check=True)
        with path.open(newline="", encoding="utf-8") as file:
            read = list(csv.reader(file, strict=True))
        wanted = rows_of_query(tool, trace, table)
        for number, (got, expected) in enumerate(zip(read, wanted)):
            if got != expected:
                sys.exit(f"{trace}: {table}, row {number}: {got} instead of {expected}")
        if len(read) != len(wanted):
            sys.exit(f"{trace}: {table} has {len(read)} rows instead of {len(wanted)}")
        fields += sum(map(len, read))
    if fields < 100:
        sys.exit(f"{trace}: only {fields} fields")
    print(f"ok  {'Python csv':24} {pathlib.Path(trace).name:16} {len(TABLES)} tables, {fields} fields as in SQL")


def main():
    # Values of a trace may be long.
    csv.field_size_limit(2 ** 31 - 1)
    with tempfile.TemporaryDirectory() as folder:
        for trace in sys.argv[2:]:
            check(sys.argv[1], trace, pathlib.Path(folder))


if __name__ == "__main__":
    main()
