#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The loadable extension in programs that know nothing of it: the sqlite3 shell and Python's sqlite3.

sql_extension_test.py CTTOOL SQLITE3 EXTENSION GOOD BAD: EXTENSION is codetrace.so, GOOD and BAD are traces.
"""
import pathlib
import shutil
import sqlite3
import subprocess
import sys
import tempfile


def shell(sqlite, *lines):
    """Output and messages of the sqlite3 shell."""
    run = subprocess.run([sqlite, "-bail", ":memory:"], input="\n".join(lines), text=True,
                         stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    return run.stdout.rstrip("\n")


def counted(cttool, trace, query):
    """The one value that cttool gives."""
    run = subprocess.run([cttool, "sql", trace, query, "--format", "csv"], text=True, check=True,
                         stdout=subprocess.PIPE)
    return run.stdout.splitlines()[1]


def check_shell(sqlite, load, cttool, good, bad):
    """Created tables, whole traces, joins of two, and what goes wrong."""
    calls = counted(cttool, good, "select count(*) from calls")
    functions = counted(cttool, bad, "select count(*) from functions")
    assert shell(sqlite, load, f"create virtual table temp.t using codetrace('{good}');",
                 "select count(*) from t;") == calls
    assert shell(sqlite, load, f"create virtual table temp.f using codetrace('{bad}', functions);",
                 "select count(*) from f;") == functions
    both = (load, f"select codetrace_open('{good}', 'good') like 'good.request, good.nodes, %';",
            f"select codetrace_open('{bad}', 'bad') is not null;")
    answer = shell(sqlite, *both, "select count(*) from good.calls;",
                   "select count(*) from bad.functions;").splitlines()
    assert answer == ["1", "1", calls, functions], answer
    # What both call, worked out on the shell's own tables.
    joined = shell(sqlite, *both, "select count(*), sum(g.calls) from good.functions g "
                   "where name in (select name from bad.functions);",
                   "create temp table g as select * from good.functions;",
                   "create temp table b as select * from bad.functions;",
                   "select count(*), sum(calls) from g where name in (select name from b);")
    first, second = joined.splitlines()[2:]
    assert first == second and not first.startswith("0|"), joined
    # One trace without a name of its own.
    assert shell(sqlite, load, f"select codetrace_open('{good}') is not null;",
                 "select count(*) from calls;").splitlines() == ["1", calls]
    assert shell(sqlite, load, "select 'abc' regexp '^a.c$', plain('\"x\"');") == "1|x"
    assert "own_ns" in shell(sqlite, load, "select codetrace_schema('calls');")
    # A name that is taken: nothing is left behind, and the next try has its tables.
    taken = shell(sqlite, ".bail off", load, "create temp table sent(x);",
                  f"select codetrace_open('{good}');",
                  "select group_concat(name) from temp.sqlite_schema;", "drop table temp.sent;",
                  f"select codetrace_open('{good}') is not null;", "select count(*) from calls;")
    assert "already exists" in taken and taken.splitlines()[-3:] == ["sent", "1", calls], taken
    missing = good + ".missing"
    assert "No such file" in shell(sqlite, load, f"select codetrace_open('{missing}', 'x');")
    assert "No such file" in shell(sqlite, load,
                                   f"create virtual table temp.t using codetrace('{missing}');")
    assert "no table nothing" in shell(
        sqlite, load, f"create virtual table temp.t using codetrace('{good}', nothing);")
    assert "needs the name of a trace" in shell(sqlite, load,
                                                "create virtual table temp.t using codetrace();")
    assert "no such table" in shell(sqlite, load, "select * from codetrace;")


def check_schemas(sqlite, load, good, folder):
    """A database that was brought along cannot open traces behind one's back."""
    database = str(folder / "hidden.db")
    made = subprocess.run([sqlite, database], text=True, input="\n".join(
        (load, f"create virtual table t using codetrace('{good}');",
         "create view v as select * from t;",
         f"create view w as select codetrace_open('{good}');", "select count(*) > 0 from t;")),
        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    assert made.stdout == "1\n", made.stdout
    for view in "v", "w":
        run = subprocess.run([sqlite, "-bail", database], text=True, input="\n".join(
            (load, "pragma trusted_schema = off;", f"select count(*) from {view};")),
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        assert "unsafe use" in run.stdout, (view, run.stdout)


def connect(extension):
    """A connection of Python's with the extension."""
    connection = sqlite3.connect(":memory:")
    connection.enable_load_extension(True)
    connection.load_extension(extension)
    connection.enable_load_extension(False)
    return connection


def check_python(extension, cttool, good, bad, folder):
    """The same from Python, several connections and tables that come and go."""
    for _ in range(3):
        connection = connect(extension)
        for name, trace in (("good", good), ("bad", bad)):
            connection.execute("select codetrace_open(?, ?)", (trace, name)).fetchall()
            (count,) = connection.execute(f"select count(*) from {name}.calls").fetchone()
            assert str(count) == counted(cttool, trace, "select count(*) from calls")
        (first,) = connection.execute("select args from good.calls where id = "
                                      "(select min(id) from good.calls where arg_count > 0)").fetchone()
        assert first.startswith("["), first
        connection.execute("drop table good.nodes")
        connection.execute("detach bad")
        connection.close()
    # A file that has changed is read again by new tables; the old ones keep what they showed.
    copy = folder / "it's a, trace.ct"
    shutil.copy(good, copy)
    connection = connect(extension)
    quoted = str(copy).replace("'", "''")
    connection.execute(f"create virtual table temp.a using codetrace('{quoted}')")
    connection.execute(f"create virtual table temp.b using codetrace('{quoted}', nodes)")
    copy.unlink()
    shutil.copy(bad, copy)
    connection.execute(f"create virtual table temp.c using codetrace('{quoted}')")
    (old,) = connection.execute("select count(*) from a").fetchone()
    (new,) = connection.execute("select count(*) from c").fetchone()
    assert str(old) == counted(cttool, good, "select count(*) from calls")
    assert str(new) == counted(cttool, bad, "select count(*) from calls")
    connection.close()


def main():
    cttool, sqlite, extension, good, bad = sys.argv[1:]
    extension = extension.removesuffix(".so")
    load = f".load {extension}"
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        check_shell(sqlite, load, cttool, good, bad)
        check_schemas(sqlite, load, good, folder)
        check_python(extension, cttool, good, bad, folder)
    print("the extension works in both programs")


if __name__ == "__main__":
    main()
