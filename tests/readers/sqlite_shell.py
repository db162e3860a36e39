#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""sqlite_shell.py CTTOOL TRACE...: the sqlite3 shell finds the database whole, each table of it equal, row
for row and type for type, to the same query by `cttool sql`, and its views without errors."""
import itertools
import pathlib
import subprocess
import sys
import tempfile

# Texts in hexadecimal, so that both programs print nothing that they would write each in its own way.
FORM = "case typeof({0}) when 'text' then hex({0}) else quote({0}) end as {0}"


def output(*command):
    run = subprocess.run(command, stdout=subprocess.PIPE, check=False)
    # cttool says by status 1 that there are no rows.
    if run.returncode not in (0, 1 if "sql" in command else 0):
        sys.exit(f"{command} ended with status {run.returncode}")
    return run.stdout.decode().splitlines()


def shell(database, query):
    return output("sqlite3", "-bail", "-batch", "-readonly", "-csv", "-header", database, query)


def names(database, kind):
    return shell(database, f"select name from sqlite_schema where type = '{kind}' and name not like 'sqlite_%'")[1:]


def check_table(tool, trace, database, table):
    columns = shell(database, f"select name from pragma_table_info('{table}')")[1:]
    query = f"select {', '.join(map(FORM.format, columns))} from {table}"
    read = shell(database, query)
    wanted = output(tool, "sql", trace, "--format", "csv", query)
    for number, (got, expected) in enumerate(itertools.zip_longest(read, wanted)):
        if got != expected:
            sys.exit(f"{trace}: {table}, row {number}: {got} instead of {expected}")
    return len(wanted) - 1 if wanted else 0


def check(tool, trace, database):
    subprocess.run([tool, "export", trace, "--to", "sqlite", "-o", database], check=True)
    integrity = shell(database, "pragma integrity_check")[1:]
    if integrity != ["ok"]:
        sys.exit(f"{trace}: integrity_check says {integrity}")
    version = int(shell(database, "pragma user_version")[1])
    tables, views, indexes = (names(database, kind) for kind in ("table", "view", "index"))
    if version < 1 or len(tables) < 12 or not views or len(indexes) < 2:
        sys.exit(f"{trace}: version {version}, {tables}, {views}, {indexes}")
    rows = sum(check_table(tool, trace, database, table) for table in tables)
    answers = sum(bool(shell(database, f"select * from {view}")) for view in views)
    if rows < 100 or not answers:
        sys.exit(f"{trace}: {rows} rows, {answers} views with an answer")
    print(f"ok  {'sqlite3':24} {pathlib.Path(trace).name:16} {len(tables)} tables with {rows} rows as in SQL, "
          f"{answers} of {len(views)} views have an answer")


def main():
    for trace in sys.argv[2:]:
        with tempfile.TemporaryDirectory() as folder:
            check(sys.argv[1], trace, pathlib.Path(folder) / "trace.sqlite")


if __name__ == "__main__":
    main()
