#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""sqlite_shell.py CTTOOL TRACE...: the sqlite3 shell finds the database whole, each table of it equal, row
for row and type for type, to the same query by `cttool sql`, and each view to the query that it is."""
import csv
import itertools
import sys

from companion import export, for_each_trace, output, passed

TABLES = ["request", "nodes", "calls", "functions", "classes", "includes", "writes", "headers", "sent", "errors",
          "events", "repeats"]
# Texts in hexadecimal, so that both programs print nothing that they would write each in its own way.
FORM = "case typeof({0}) when 'text' then 'x' || hex({0}) else quote({0}) end"


def shell(database, query):
    return output("sqlite3", "-bail", "-batch", "-readonly", "-csv", "-header", database, query)


def names(database, kind):
    return shell(database, f"select name from sqlite_schema where type = '{kind}' and name not like 'sqlite_%'")[1:]


def compare(tool, trace, database, name, columns, source, same):
    """Rows of `source` in the database and of `same` in the trace; how many there are."""
    fields = ", ".join(FORM.format(f'"{column}"') for column in columns)
    read = shell(database, f"select {fields} from {source}")[1:]
    wanted = output(tool, "sql", trace, "--format", "csv", f"select {fields} from {same}", may_find_nothing=True)[1:]
    for number, (got, expected) in enumerate(itertools.zip_longest(read, wanted)):
        if got != expected:
            sys.exit(f"{trace}: {name}, row {number}: {got} instead of {expected}")
    return len(wanted)


def columns_of(database, name):
    return shell(database, f"select name from pragma_table_info('{name}')")[1:]


def check_view(tool, trace, database, view):
    if view == "ancestors":
        # All at once would be every pair of nodes; and the deepest node has the most.
        node = next(iter(shell(database, "select id from nodes order by depth desc, id limit 1")[1:]), -1)
        return compare(tool, trace, database, view, ["id", "depth"], f'ancestors where "of" = {node}',
                       f"ancestors({node})")
    query = shell(database, f"select replace(sql, char(10), ' ') from sqlite_schema where name = '{view}'")[1]
    query = next(csv.reader([query]))[0].partition(" as ")[2]
    return compare(tool, trace, database, view, columns_of(database, view), view, f"({query})")


def check(tool, trace, folder):
    database = export(tool, trace, folder / "trace.sqlite", "sqlite")
    integrity = shell(database, "pragma integrity_check")[1:]
    if integrity != ["ok"]:
        sys.exit(f"{trace}: integrity_check says {integrity}")
    version = int(shell(database, "pragma user_version")[1])
    tables, views, indexes = (names(database, kind) for kind in ("table", "view", "index"))
    if version < 1 or not set(TABLES) <= set(tables) or len(views) < 12 or len(indexes) < 2:
        sys.exit(f"{trace}: version {version}, {tables}, {views}, {indexes}")
    rows = sum(compare(tool, trace, database, table, columns_of(database, table), table, table) for table in TABLES)
    answers = sum(check_view(tool, trace, database, view) for view in views)
    if rows < 100 or not answers:
        sys.exit(f"{trace}: {rows} rows, {answers} in views")
    passed("sqlite3", trace, f"{len(TABLES)} tables with {rows} rows and {len(views)} views with {answers} as in SQL")


if __name__ == "__main__":
    for_each_trace(check)
