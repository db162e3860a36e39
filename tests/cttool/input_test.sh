#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# input_test.sh CTTOOL EXAMPLES: traces that come from pipes and archives, whole, damaged and malicious.
# shellcheck disable=SC2016,SC2317 # other shells expand what is quoted; `from` is called by expect
set -euo pipefail
cttool=$1 notes=$2/notes.ct
work=$(mktemp -d)
trap 'rm -rf -- "$work"' EXIT
failures=0
skipped=0

# A sanitizer reserves more than any limit by itself.
limit='ulimit -v 700000; '
bash -c "$limit"'exec "$0" --version' "$cttool" >"$work/version" 2>&1 || limit=''

complain() {
  echo "$*"
  failures=$((failures + 1))
}

# expect STATUS WORDS COMMAND...: it ends so, and says the words on standard error.
expect() {
  local wanted=$1 words=$2 status=0
  shift 2
  "$@" >"$work/out" 2>"$work/err" || status=$?
  if ((status != wanted)); then
    complain "status $status, not $wanted: $* ($(<"$work/err"))"
  elif [[ $words && $(<"$work/err") != *"$words"* ]]; then
    complain "does not say '$words' but '$(<"$work/err")': $*"
  elif [[ ! $words && -s $work/err ]]; then
    complain "says '$(<"$work/err")': $*"
  fi
}
# The same, and the output is that of the plain file.
expect_all() {
  expect "$@"
  cmp -- "$work/plain" "$work/out" || complain "another output: $*"
}
from() {
  local input=$1
  shift
  "$@" <"$input"
}

expect 0 "" "$cttool" top "$notes"
cp -- "$work/out" "$work/plain"
expect_all 0 "" from "$notes" "$cttool" top -
expect_all 0 "" "$cttool" top <(cat -- "$notes")
expect_all 0 "" from <(cat -- "$notes") "$cttool" top -
size=$(stat -c %s -- "$notes")
head -c 1000 -- "$notes" >"$work/short"
expect 2 "Failed to open - : Expected $size bytes, but got 1000 bytes" from "$work/short" "$cttool" top -
expect 2 "Failed to open $work : file to open is a directory" "$cttool" top "$work"
expect 2 "Failed to open - : Is a directory" from "$work" "$cttool" top -
expect 2 "Failed to open $work/none : No such file or directory" "$cttool" top "$work/none"
expect 2 "but got 0 bytes" "$cttool" top /dev/null
expect 2 "but got 0 bytes" from /dev/null "$cttool" top -
expect 2 "Failed to open - : Bad file descriptor" bash -c '"$0" top - <&-' "$cttool"

# Each program, on a file, by way of a pipe, and twice in a row.
for program in gzip xz zstd; do
  if ! command -v "$program" >/dev/null; then
    echo "$program is missing: its archives are not tested"
    skipped=$((skipped + 1))
    continue
  fi
  archive=$work/$program
  "$program" -c <"$notes" >"$archive"
  expect_all 0 "" "$cttool" top "$archive"
  expect_all 0 "" from "$archive" "$cttool" top -
  expect_all 0 "" "$cttool" top <(cat -- "$archive")
  {
    head -c 100000 -- "$notes" | "$program" -c
    tail -c +100001 -- "$notes" | "$program" -c
  } >"$work/two"
  expect_all 0 "" "$cttool" top "$work/two"

  # Cut short anywhere it is no trace; what is missing is told.
  packed=$(stat -c %s -- "$archive")
  for kept in 7 20 $((packed / 3)) $((packed / 2)) $((packed * 9 / 10)); do
    head -c "$kept" -- "$archive" >"$work/cut"
    expect 2 "the archive is damaged, it ends too early: Expect" "$cttool" top "$work/cut"
  done
  # But when all of the trace came out, it is read.
  head -c $((packed - 1)) -- "$archive" >"$work/cut"
  expect_all 0 "the archive is damaged, it ends too early; the trace in it is all there" \
    "$cttool" top "$work/cut"
  # Bytes in the middle turned around: not a word of what comes behind is believed.
  {
    head -c $((packed / 2)) -- "$archive"
    printf '\377\0\377\0\377\0\377\0'
    tail -c +$((packed / 2 + 9)) -- "$archive"
  } >"$work/turned"
  status=0
  "$cttool" top "$work/turned" >"$work/out" 2>"$work/err" || status=$?
  [[ $(<"$work/err") == *"the archive is damaged"* ]] || complain "no word of damage: $program"
  # Something behind it.
  { cat -- "$archive"; printf 'more\n'; } >"$work/more"
  expect_all 0 "the archive is damaged" "$cttool" top "$work/more"

  # A trace that is larger than allowed, and the way to allow it.
  expect 2 "the archive is larger than 100.0 KiB; --max-size" \
    "$cttool" --max-size 100K top "$archive"
  expect_all 0 "" "$cttool" --max-size 400K top "$archive"
  # A bomb that is no trace is left at once, and one that says that it is one at the limit, in little
  # memory.
  head -c 200000000 /dev/zero | "$program" -c >"$work/bomb"
  expect 2 "Invalid Code Trace dump file magic" "$cttool" top "$work/bomb"
  {
    printf 'CT\1\0\0\0\0\1\0\0\0\1\377\377\377\377\377\377\377\377'
    head -c 200000000 /dev/zero
  } | "$program" -c >"$work/bomb"
  expect 2 "the archive is larger than 20.0 MiB" \
    bash -c "$limit"'exec "$0" --max-size 20M top "$1"' "$cttool" "$work/bomb"
done
((skipped < 3)) || complain "no archive was tested"
exit "$((failures != 0))"
