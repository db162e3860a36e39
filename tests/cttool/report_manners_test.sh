#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# report_manners_test.sh CTTOOL EXAMPLES: where reports go, what happens to what was there, what is said
# of them, and of options that make no sense.
set -euo pipefail
cttool=$1 examples=$2
# shellcheck source=tests/cttool/expect.sh
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/expect.sh"
notes=$work/notes.ct
cp -- "$examples/notes.ct" "$notes"
mkdir "$work/to"
to=$work/to/out.html
# One line is said of a file, and nothing of what goes to standard output.
expect 0 "wrote $to, " "$cttool" report "$notes" -o "$to"
[[ $(wc -l <"$work/err") == 1 && ! -s $work/out ]] || fail "says more than a line: $(cat "$work/err")"
expect 0 "" "$cttool" report "$notes"
[[ ! -s $work/err ]] || fail "speaks of standard output: $(cat "$work/err")"
cmp -- "$to" "$work/out" || fail "differs between runs"
"$cttool" report "$notes" -o - | cmp -- "$to" - || fail "-o -"
[[ $(head -n 1 "$to") == '<!doctype html>' ]] || fail "is no page"

# What cannot be written is told, and what was there before stays.
expect 2 "No space left on device" "$cttool" report "$notes" -o /dev/full
if "$cttool" report "$notes" >/dev/full 2>"$work/err"; then fail ">/dev/full"; fi
echo before >"$to"
expect 2 "" bash -c 'ulimit -f 4; exec "$@"' - "$cttool" report "$notes" -o "$to"
expect 2 "" "$cttool" report "$work/missing.ct" -o "$to"
expect 1 "nothing called nobody" "$cttool" report "$notes" --under nobody -o "$to"
expect 1 "no node is left to report" "$cttool" report "$notes" --only nothing -o "$to"
expect 2 "without any values" "$cttool" report "$notes" --max-size 1k -o "$to"
[[ $(<"$to") == before ]] || fail "a failed report left half of a file"
left=$(find "$work/to" -type f -printf '%f\n' | grep -vx 'out\.html' || true)
[[ -z $left ]] || fail "left over: $left"
expect 2 "it is the Code Trace file itself" "$cttool" report "$notes" -o "$notes"
cmp -- "$notes" "$examples/notes.ct" || fail "the trace was touched"
expect 2 "Is a directory" "$cttool" report "$notes" -o "$work/to"
expect 2 "No such file" "$cttool" report "$notes" -o "$work/nowhere/x"

# A reader that leaves: no message, and no success.
{ "$cttool" report "$notes" 2>"$work/err" || echo $? >"$work/status"; } | true
status=$(cat "$work/status" 2>/dev/null || echo 0)
[[ ! -s $work/err ]] || fail "complains of a reader that left: $(cat "$work/err")"
[[ $status == 0 || $status == 2 ]] || fail "status $status for a reader that left"

# From a pipe and out of an archive; the page tells the name as it was written.
gzip -c "$notes" >"$work/notes.ct.gz"
gzip -c "$notes" | "$cttool" report - >"$work/piped"
"$cttool" report - <"$notes" | cmp -- - "$work/piped" || fail "standard input"
expect 0 "wrote" "$cttool" report "$work/notes.ct.gz" -o "$work/zipped.html"
expect 2 "is larger than" "$cttool" --max-size 1k report "$work/notes.ct.gz" -o "$work/zipped.html"

# What was left out is said, wherever the page goes.
whole=$(stat -c %s "$work/zipped.html")
expect 0 "left out the values of" "$cttool" report "$notes" --max-size $((whole - 800)) -o "$to"
[[ $(stat -c %s "$to") -le $((whole - 800)) ]] || fail "larger than --max-size"
expect 0 "left out the values of" "$cttool" report "$notes" --max-size $((whole - 800))
expect 0 "wrote" "$cttool" report "$notes" --max-size 500k -o "$to"
expect 0 "wrote" "$cttool" report "$notes" --max-size 64MB -o "$to"
expect 2 "" "$cttool" report "$notes" --max-size soon -o "$to"
expect 2 "FILE is required" "$cttool" report
expect 2 "did you mean --max-size" "$cttool" report "$notes" --max-sise 3M
expect 2 "soon is no time" "$cttool" report "$notes" --min soon -o "$to"
expect 2 "is no regular expression" "$cttool" report "$notes" --hide '/(/' -o "$to"
((failures == 0))
