#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""csv_rows.py CTTOOL TRACE...: Python's csv reads every table, and each field is what SQL says."""
import csv
import itertools
import sys

from companion import export, for_each_trace, output, passed, rows

TABLES = ("request", "nodes", "calls", "functions", "classes", "includes", "writes", "headers", "sent",
          "errors", "events", "repeats")


def rows_of_query(tool, trace, table):
    """As texts, with the columns' names first. JSON would be a value of the answer otherwise."""
    columns = output(tool, "sql", trace, "--format", "csv", f"select name from pragma_table_info('{table}')")[1:]
    texts = ", ".join(f"{name} || '' as {name}" for name in columns)
    answer = rows(tool, trace, f"select {texts} from {table}")
    return [columns] + [["" if value is None else value for value in row.values()] for row in answer]


def check_table(tool, trace, folder, table):
    path = export(tool, trace, folder / f"{table}.csv", "csv", "--table", table)
    fields = 0
    with path.open(newline="", encoding="utf-8") as file:
        read = csv.reader(file, strict=True)
        for number, (got, wanted) in enumerate(itertools.zip_longest(read, rows_of_query(tool, trace, table))):
            if got != wanted:
                sys.exit(f"{trace}: {table}, row {number}: {got} instead of {wanted}")
            fields += len(got)
    return fields


def check(tool, trace, folder):
    fields = sum(check_table(tool, trace, folder, table) for table in TABLES)
    if fields < 100:
        sys.exit(f"{trace}: only {fields} fields")
    passed("Python csv", trace, f"{len(TABLES)} tables, {fields} fields as in SQL")


if __name__ == "__main__":
    # Values of a trace may be long.
    csv.field_size_limit(2 ** 31 - 1)
    for_each_trace(check)
