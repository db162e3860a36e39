#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# manners_test.sh CTTOOL EXAMPLES: what cttool says and with which status it ends.
set -euo pipefail
cttool=$1 examples=$2
work=$(mktemp -d)
trap 'rm -rf -- "$work"' EXIT
notes=$examples/notes.ct
failures=0

# expect STATUS WORDS COMMAND...: it ends so, and says the words on one of its two outputs. What is
# said on standard error begins with nothing of a trace's own.
expect() {
  local wanted=$1 words=$2 status=0
  shift 2
  "$@" >"$work/out" 2>"$work/err" || status=$?
  if ((status != wanted)); then
    echo "status $status, not $wanted: $*"
    failures=$((failures + 1))
  elif [[ $words && $(cat -- "$work/out" "$work/err") != *"$words"* ]]; then
    echo "does not say '$words': $*"
    cat -- "$work/out" "$work/err"
    failures=$((failures + 1))
  fi
}

expect 0 "Usage: cttool VERB" "$cttool"
expect 0 "Usage: cttool VERB" "$cttool" --help
expect 0 "Usage: cttool VERB" "$cttool" help
expect 0 "cttool 3." "$cttool" --version
for verb in summary top tree calls show response sql; do
  expect 0 "Usage: cttool $verb" "$cttool" help "$verb"
  cp -- "$work/out" "$work/help"
  expect 0 "Examples:" "$cttool" "$verb" --help
  cmp -- "$work/help" "$work/out" || failures=$((failures + 1))
  if (($(wc -l <"$work/out") > 40)); then
    echo "more than a screen: $verb --help"
    failures=$((failures + 1))
  fi
  wide=$(grep -E '^.{81}' -- "$work/out" || true)
  if [[ $wide ]]; then
    echo "wider than a screen: $verb --help: $wide"
    failures=$((failures + 1))
  fi
  expect 2 "FILE is required" "$cttool" "$verb"
  expect 2 "there is no option --nonsense" "$cttool" "$verb" "$notes" --nonsense
  operand=()
  [[ $verb != show ]] || operand=(1)
  [[ $verb != sql ]] || operand=("select 1")
  for file in "$work/missing.ct" "$work" /dev/null; do
    expect 2 "Failed to open" "$cttool" "$verb" "$file" "${operand[@]}"
  done
done
expect 2 "did you mean top?" "$cttool" topp "$notes"
expect 2 "did you mean --limit?" "$cttool" top "$notes" --limt 3
expect 2 "there is no verb nothing" "$cttool" help nothing
expect 2 "soon is no time" "$cttool" calls "$notes" --min soon
expect 2 "is no regular expression" "$cttool" calls "$notes" '/(/'
expect 2 "--by" "$cttool" top "$notes" --by size
expect 1 "there is no node 100000000" "$cttool" show "$notes" 100000000
expect 2 "soon is no time" "$cttool" tree "$notes" --min soon
expect 2 "101% is no time" "$cttool" tree "$notes" --min 101%
expect 2 "is no regular expression" "$cttool" tree "$notes" --hide '/(/'
expect 2 "--depth" "$cttool" tree "$notes" --depth x
expect 1 "no node is left to show" "$cttool" tree "$notes" --only nothing
expect 1 "there is no node 100000000" "$cttool" tree "$notes" --under 100000000
expect 1 "nothing called nothing" "$cttool" calls "$notes" nothing
expect 1 "did you mean str_repeat?" "$cttool" calls "$notes" str_repaet
expect 1 "nothing threw Nothing; " "$cttool" calls "$notes" --threw Nothing
expect 2 "has no / at its end" "$cttool" calls "$notes" '/a'
expect 2 "-1 is no whole number" "$cttool" calls "$notes" --limit -1
expect 1 "is no number of a node" "$cttool" show "$notes" seven
expect 0 "#7  " "$cttool" show "$notes" '#7'
expect 2 "did you mean cttool summary $notes?" "$cttool" "$notes"
expect 0 "--limit 0 shows all" "$cttool" show "$notes" 1 --limit 3
expect 1 "nothing called nothing" "$cttool" top "$notes" --under nothing

# From a pipe it is the same.
"$cttool" top "$notes" >"$work/by_name"
cat -- "$notes" >"$work/copy"
"$cttool" top - <"$work/copy" >"$work/by_input"
cmp -- "$work/by_name" "$work/by_input"
expect 0 "more; --limit 0 shows all" "$cttool" calls "$notes" --limit 2
expect 0 "nodes have no line; --limit 0 shows all" "$cttool" tree "$notes" --limit 2
expect 0 "nodes have no line, as --depth said" "$cttool" tree "$notes" --depth 1
expect 0 "nodes are hidden, as --hide said" "$cttool" tree "$notes" --hide '*'

# A full disk is no success, and a reader that leaves is no noise.
status=0
"$cttool" calls "$notes" >/dev/full 2>"$work/err" || status=$?
[[ $status == 2 && $(<"$work/err") == *"No space left"* ]] || {
  echo "a full disk: status $status, $(<"$work/err")"
  failures=$((failures + 1))
}
exec {answer}< <("$cttool" calls "$notes" --full 2>"$work/err")
asked=$!
read -r -u "$answer" _
exec {answer}<&-
wait "$asked" || true
[[ ! -s $work/err ]] || {
  echo "noise to a reader that left: $(<"$work/err")"
  failures=$((failures + 1))
}

# A trace names any file at any line; what is not there, or is none, is no failure.
expect 0 "(is not on this machine)" "$cttool" show "$notes" 7 --source
expect 0 "called" "$cttool" show "$notes" 1

# Damage is said once, at the end, and each of it with -v.
head -c 36 -- "$notes" >"$work/short"
expect 2 "Failed to open" "$cttool" top "$work/short"

# Forms for programs are what they say they are.
"$cttool" calls "$notes" --format json >"$work/calls.json"
jq -e '.schema == "cttool.calls/1" and (.calls | length) > 1000' "$work/calls.json" >"$work/answer"
"$cttool" top "$notes" --format json >"$work/top.json"
jq -e '.schema == "cttool.top/1" and (.rows | length) == 20' "$work/top.json" >"$work/answer"
"$cttool" show "$notes" 7 --format json >"$work/show.json"
jq -e '.schema == "cttool.show/1" and .id == 7 and .path == [0, 1]' "$work/show.json" >"$work/answer"
"$cttool" calls "$notes" --format csv >"$work/calls.csv"
python3 - "$work/calls.csv" "$work/calls.json" <<'PYTHON'
import csv, json, sys
rows = list(csv.DictReader(open(sys.argv[1], newline="", encoding="utf-8")))
calls = json.load(open(sys.argv[2], encoding="utf-8"))["calls"]
assert len(rows) == len(calls)
for row, call in zip(rows, calls):
    assert row["name"] == call["name"] and int(row["total_ns"]) == call["total_ns"]
    assert json.loads(row["args"]) == call["args"]
PYTHON
exit "$((failures != 0))"
