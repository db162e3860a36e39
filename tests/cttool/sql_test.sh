#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# sql_test.sh CTTOOL EXAMPLES: what `cttool sql` and `cttool calls --where` say, and with which status.
set -euo pipefail
cttool=$1 notes=$2/notes.ct
work=$(mktemp -d)
trap 'rm -rf -- "$work"' EXIT
failures=0

fail() {
  printf '%s\n' "$@"
  failures=$((failures + 1))
}

# expect STATUS WORDS COMMAND...: it ends so, and says the words on one of its two outputs.
expect() {
  local wanted=$1 words=$2 status=0
  shift 2
  "$@" >"$work/out" 2>"$work/err" || status=$?
  ((status == wanted)) || fail "status $status, not $wanted: $*"
  [[ $(cat -- "$work/out" "$work/err") == *"$words"* ]] ||
    fail "does not say '$words': $*" "$(cat -- "$work/out" "$work/err")"
}

expect 0 "own_ns" "$cttool" sql "$notes" .schema
expect 0 "calls: calls of functions" "$cttool" sql "$notes" '.schema CALLS'
expect 2 "there is no table nothing" "$cttool" sql "$notes" '.schema nothing'
expect 2 "there is .schema" "$cttool" sql "$notes" '.tables'
expect 2 "it has no --format" "$cttool" sql "$notes" .schema --format json
expect 0 "notes.ct" "$cttool" sql "$notes" 'select path from request'
expect 1 "" "$cttool" sql "$notes" 'select * from calls where id < 0'
expect 0 "7" "$cttool" sql "$notes" 'select * from calls where id < 0; select 3 + 4'
expect 2 "line 2, column 8 of the query: no such column: none" \
  "$cttool" sql "$notes" $'select 1;\nselect none from calls'
[[ $(<"$work/err") == *$'\n  select none from calls\n         ^'* ]] || fail "no mark: $(<"$work/err")"
expect 2 "a query can only read" "$cttool" sql "$notes" 'create table t(x)'
expect 2 "a query can only read" "$cttool" sql "$notes" "vacuum into '$work/file.db'"
[[ ! -e $work/file.db ]] || fail "a query wrote a file"
endless='with recursive t(x) as (values(1) union all select x + 1 from t) select count(*) from t'
expect 2 "not done after 0.2 s" "$cttool" sql "$notes" "$endless" --timeout 0.2
expect 2 "--timeout" "$cttool" sql "$notes" 'select 1' --timeout 0
expect 2 "QUERY is required" "$cttool" sql - <"$notes"

# The query from standard input, or the trace.
echo 'select count(*) from calls' >"$work/query"
expect 0 "" "$cttool" sql "$notes" <"$work/query"
cp -- "$work/out" "$work/by_input"
expect 0 "" "$cttool" sql - 'select count(*) from calls' <"$notes"
cmp -- "$work/out" "$work/by_input" || fail "the trace from standard input differs"

# Ctrl-C ends a query with a word.
python3 - "$cttool" "$notes" "$endless" <<'PYTHON' || fail "Ctrl-C is not heard"
import signal, subprocess, sys, time
run = subprocess.Popen([sys.argv[1], "sql", sys.argv[2], sys.argv[3]], stderr=subprocess.PIPE,
                       stdout=subprocess.DEVNULL, text=True,
                       preexec_fn=lambda: signal.signal(signal.SIGINT, signal.default_int_handler))
def is_caught():
    status = open(f"/proc/{run.pid}/status", encoding="utf-8").read()
    caught = next(line for line in status.splitlines() if line.startswith("SigCgt:"))
    return int(caught.split()[1], 16) >> (signal.SIGINT - 1) & 1
while not is_caught():
    time.sleep(0.01)
run.send_signal(signal.SIGINT)
error = run.communicate()[1]
assert run.returncode == 2 and "interrupted" in error, (run.returncode, error)
PYTHON

# Forms: each cell in its own way, NULL as nothing, controls shown in the human ones only.
row="select 1 as a, null as b, 1.5 as a, 'x|\"y' || char(10) as c, x'00ff' as d"
expect 0 $'a  b  a_2  c       d\n1     1.5  x|"y\\n  x\'00ff\'' "$cttool" sql "$notes" "$row"
expect 0 $'a,b,a_2,c,d\n1,,1.5,"x|""y\n",x\'00ff\'' "$cttool" sql "$notes" "$row" --format csv
expect 0 '{"a":1,"b":null,"a_2":1.5,"c":"x|\"y\n","d":"x'"'00ff'"'"}' \
  "$cttool" sql "$notes" "$row" --format jsonl
expect 0 $'| a | b | a\\_2 | c | d |\n|---|---|---|---|---|\n| 1 |  | 1.5 | x\\|"y\\\\n | x'"'00ff' |" \
  "$cttool" sql "$notes" "$row" --format markdown
"$cttool" sql "$notes" "$row; select args, 9e999 from calls limit 1" --format json >"$work/json"
jq -e '.schema == "cttool.sql/1" and (.results | length) == 2 and
  .results[0].columns == ["a", "b", "a_2", "c", "d"] and
  (.results[1].rows[0][0] | type) == "array" and .results[1].rows[0][1] == "Infinity"' \
  "$work/json" >"$work/answer" || fail "the JSON is not so: $(<"$work/json")"

query="select args from calls where id = (select min(id) from calls) union all select 'no json' union all select '[1]'"
"$cttool" sql "$notes" "$query" --format jsonl >"$work/lines"
jq -es 'map(.args | type) == ["array", "string", "array"]' "$work/lines" >"$work/answer" ||
  fail "values are not so: $(<"$work/lines")"

# Rows behind those that decide the widths, and a reader that leaves.
lines=$("$cttool" sql "$notes" 'select a.id, b.id from nodes a, nodes b limit 5000' | wc -l)
((lines == 5001)) || fail "$lines lines, not 5001"
exec {answer}< <("$cttool" sql "$notes" 'select a.id from nodes a, nodes b' 2>"$work/err")
asked=$!
read -r -u "$answer" _
exec {answer}<&-
wait "$asked" || true
[[ ! -s $work/err ]] || fail "noise to a reader that left: $(<"$work/err")"
expect 2 "No space left" bash -c '"$1" sql "$2" "select 1" >/dev/full' - "$cttool" "$notes"

# The condition of calls.
where=$("$cttool" calls "$notes" --where 'arg_count > 1' --count)
count=$("$cttool" sql "$notes" 'select count(*) from calls where arg_count > 1' --format csv | tail -1)
[[ $where == "$count" && $where != 0 ]] || fail "--where takes $where calls, not $count"
expect 0 "" "$cttool" calls "$notes" 'str*' --where "arg_count > 1 -- and more" --count
expect 1 "" "$cttool" calls "$notes" --where 'id < 0'
expect 2 "line 1, column 5 of the query: no such column: none" "$cttool" calls "$notes" --where '1 + none'
expect 2 "one expression" "$cttool" calls "$notes" --where '1); select id from calls where (1'
exit "$((failures != 0))"
