#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# export_manners_test.sh CTTOOL EXAMPLES: where exports go, what happens to what was there, and what is
# said of options that make no sense.
set -euo pipefail
cttool=$1 examples=$2
# shellcheck source=tests/cttool/expect.sh
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/expect.sh"
notes=$work/notes.ct
cp -- "$examples/notes.ct" "$notes"
formats=(speedscope chrome callgrind folded jsonl csv sqlite)
# What is in the folder beside the files that are named.
leftover() { find "$work/to" -type f -printf '%f\n' | grep -vxE "$1" || true; }

mkdir "$work/to"
for format in "${formats[@]}"; do
  to=$work/to/out.$format
  # The same bytes on each run, in a file and in a pipe; standard output has a name.
  "$cttool" export "$notes" --to "$format" -o "$to"
  "$cttool" export "$notes" --to "$format" >"$work/piped"
  "$cttool" export "$notes" --to "$format" -o - | cmp -- "$to" - || fail "$format -o -"
  cmp -- "$to" "$work/piped" || fail "$format differs between runs"
  # What cannot be written is told, and what was there before stays.
  expect 2 "No space left on device" "$cttool" export "$notes" --to "$format" -o /dev/full
  if "$cttool" export "$notes" --to "$format" >/dev/full 2>"$work/err"; then fail "$format >/dev/full"; fi
  echo before >"$to"
  expect 2 "" bash -c 'ulimit -f 4; exec "$@"' - "$cttool" export "$notes" --to "$format" -o "$to"
  [[ $(<"$to") == before ]] || fail "$format: a failed export left half of a file"
  expect 2 "" "$cttool" export "$work/missing.ct" --to "$format" -o "$to"
  [[ $(<"$to") == before ]] || fail "$format: a missing trace left half of a file"
  # Files of others keep who may read them, and links lead where they led.
  chmod 600 "$to"
  ln -s -- "$to" "$work/to/link.$format"
  "$cttool" export "$notes" --to "$format" -o "$work/to/link.$format"
  cmp -- "$to" "$work/piped" || fail "$format through a link"
  [[ -L $work/to/link.$format && $(stat -c %a "$to") == 600 ]] || fail "$format: mode or link"
  expect 2 "it is the Code Trace file itself" "$cttool" export "$notes" --to "$format" -o "$notes"
  expect 2 "Is a directory" "$cttool" export "$notes" --to "$format" -o "$work/to"
  expect 2 "No such file" "$cttool" export "$notes" --to "$format" -o "$work/nowhere/x"
  expect 1 "nothing called nobody" "$cttool" export "$notes" --to "$format" --under nobody -o "$to"
done
cmp -- "$notes" "$examples/notes.ct" || fail "the trace was touched"
left=$(leftover 'out\.[a-z]*')
[[ -z $left ]] || fail "left over: $left"

# A reader that leaves: no message, and no success.
for format in speedscope folded sqlite; do
  status=0
  { "$cttool" export "$notes" --to "$format" 2>"$work/err" || echo $? >"$work/status"; } | true
  status=$(cat "$work/status" 2>/dev/null || echo 0)
  [[ ! -s $work/err ]] || fail "$format complains of a reader that left: $(cat "$work/err")"
  [[ $status == 0 || $status == 2 ]] || fail "$format: status $status for a reader that left"
done

# Ctrl-C ends an export at once. Jobs of a shell ignore it, unless somebody sees to it.
as_started() { exec env --default-signal=INT,TERM,HUP "$@"; }
for signal in INT TERM HUP; do
  mkfifo "$work/to/fifo.$signal"
  # It waits for somebody to read.
  as_started "$cttool" export "$notes" --to jsonl -o "$work/to/fifo.$signal" &
  export_job=$!
  sleep 0.5
  kill -"$signal" "$export_job"
  if wait "$export_job"; then fail "SIG$signal did not end an export"; fi
  rm -- "$work/to/fifo.$signal"
done
# Of many that are ended some are met in the middle of a file.
for signal in INT TERM; do
  echo before >"$work/to/out.sqlite"
  for ((i = 0; i != 30; ++i)); do
    as_started "$cttool" export "$notes" --to sqlite -o "$work/to/out.sqlite" &
    export_job=$!
    sleep "0.0$((i % 10))"
    kill -"$signal" "$export_job" 2>/dev/null || true
    wait "$export_job" || true
  done
  left=$(leftover 'out\.[a-z]*')
  [[ -z $left ]] || fail "left over after SIG$signal: $left"
  [[ $(head -c 6 "$work/to/out.sqlite") == before || $(head -c 6 "$work/to/out.sqlite") == SQLite ]] ||
    fail "half a database after SIG$signal"
done

# What readers of JSON take compressed.
for format in speedscope chrome jsonl; do
  "$cttool" export "$notes" --to "$format" --gzip -o "$work/to/zipped"
  "$cttool" export "$notes" --to "$format" --gzip | cmp -- "$work/to/zipped" - || fail "$format --gzip"
  gzip -dc "$work/to/zipped" | cmp -- - <("$cttool" export "$notes" --to "$format") || fail "unzipped"
done
for format in callgrind folded csv sqlite; do
  expect 2 "--gzip makes no difference to $format" "$cttool" export "$notes" --to "$format" --gzip
done

# From a pipe and out of an archive.
gzip -c "$notes" | "$cttool" export - --to folded | cmp -- - <("$cttool" export "$notes" --to folded) ||
  fail "standard input"

expect 2 "--to is required" "$cttool" export "$notes"
expect 2 "did you mean callgrind?" "$cttool" export "$notes" --to calgrind
for format in "${formats[@]}"; do
  expect 2 "  $format " "$cttool" export "$notes" --to nothing
done
expect 2 "--weight makes no difference to chrome" "$cttool" export "$notes" --to chrome --weight own
expect 2 "--values makes no difference to folded" "$cttool" export "$notes" --to folded --values none
expect 2 "--values short makes no difference to csv" "$cttool" export "$notes" --to csv --values short
expect 2 "--table makes no difference to jsonl" "$cttool" export "$notes" --to jsonl --table calls
expect 2 "there is no table nothing; the tables are request nodes calls" \
  "$cttool" export "$notes" --to csv --table nothing
expect 2 "there is no table ancestors" "$cttool" export "$notes" --to sqlite --table ancestors
expect 2 "the table functions tells of the whole trace" \
  "$cttool" export "$notes" --to csv --table functions --no-builtin
expect 1 "no node is left to export" "$cttool" export "$notes" --to folded --only nothing
expect 2 "soon is no time" "$cttool" export "$notes" --to folded --min soon
expect 2 "is no regular expression" "$cttool" export "$notes" --to folded --hide '/(/'
((failures == 0))
