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


def columns_of(tool, trace, table):
    said = subprocess.run([tool, "sql", trace, "--format", "csv", f"select name from pragma_table_info('{table}')"],
                          check=True, stdout=subprocess.PIPE).stdout.decode()
    return said.split()[1:]


def rows_of_query(tool, trace, table):
    """As texts, with the columns' names first. JSON would be a value of the answer otherwise."""
    columns = columns_of(tool, trace, table)
    texts = ", ".join(f"{name} || ''" for name in columns)
    query = f"select {texts} from {table}"
    # Status 1 says that there are no rows.
    said = subprocess.run([tool, "sql", trace, "--format", "json", query], check=False,
                          stdout=subprocess.PIPE).stdout
    rows = json.loads(said)["results"][0]["rows"]
    return [columns] + [["" if value is None else value for value in row] for row in rows]


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
