#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# check_manners_test.sh CTTOOL EXAMPLES: options, exit statuses, many files, odd files and outputs of cttool check.
# shellcheck disable=SC2016 # other shells expand what is quoted
set -euo pipefail
cttool=$1 examples=$2
work=$(mktemp -d)
trap 'rm -rf -- "$work"' EXIT
failures=0
whole=$examples/notes.ct odd=$examples/words.ct
size=$(stat -c %s -- "$whole")
head -c 200000 -- "$whole" >"$work/short.ct"
{ cat -- "$whole"; printf 'more'; } >"$work/long.ct"
# Zeros in the middle of DATA: it is walked on out of step.
{ head -c 100000 -- "$whole"; head -c 5000 /dev/zero; tail -c +105001 -- "$whole"; } >"$work/hole.ct"
: >"$work/empty.ct"

complain() {
  echo "$*"
  failures=$((failures + 1))
}
# expect STATUS WORDS COMMAND...: it ends so, and prints the words.
expect() {
  local wanted=$1 words=$2 status=0
  shift 2
  "$@" >"$work/out" 2>"$work/err" || status=$?
  ((status == wanted)) || complain "status $status, not $wanted: $* ($(<"$work/err"))"
  [[ $(<"$work/out") == *"$words"* ]] || complain "does not print '$words': $* : $(<"$work/out")"
}
expect_said() {
  local words=$2
  expect "$1" "" "${@:3}"
  [[ $(<"$work/err") == *"$words"* ]] || complain "does not say '$words': ${*:3} : $(<"$work/err")"
}

expect 0 "$whole: clean (3,214 checkpoints, 299.4 KiB)" "$cttool" check "$whole"
(($(wc -l <"$work/out") == 1)) || complain "more than a line about a clean file"
[[ ! -s $work/err ]] || complain "something is said about a clean file"
expect 1 "1 odd" "$cttool" check "$odd"
expect 0 "1 odd" "$cttool" check "$odd" --level lost
(($(wc -l <"$work/out") == 1)) || complain "what is odd is listed with --level lost"
expect 1 "  fatal  CT-SIZE            at 12: the file has 200,000 bytes, by its header it has 306,585 bytes" \
  "$cttool" check "$work/short.ct"
expect 1 "the file has 306,589 bytes" "$cttool" check "$work/long.ct"
expect 1 "the file has 0 bytes, and a header has 36" "$cttool" check "$work/empty.ct"
expect 1 "CT-HEADER" "$cttool" check /dev/null
expect 1 "CT-MAGIC" "$cttool" check "$cttool"
expect 1 "CT-ZEROS" "$cttool" check "$work/hole.ct" --limit 2
[[ $(<"$work/out") == *"more CT-NO-END; --limit 0 lists all"* ]] || complain "it is not said what is not listed"
listed=$(grep -c "^  lost   CT-NO-END" "$work/out")
((listed == 2)) || complain "$listed defects are listed with --limit 2"
expect 1 "" "$cttool" check "$work/hole.ct" --limit 0
if grep -q "more CT-" "$work/out"; then complain "something is left out with --limit 0"; fi

# What cannot be read.
expect 2 "$work: unreadable: file to open is a directory" "$cttool" check "$work"
expect_said 2 "Failed to open $work/none : No such file or directory" "$cttool" check "$whole" "$work/none" "$odd"
[[ $(wc -l <"$work/out") -ge 3 ]] || complain "files behind one that cannot be read are not checked"
expect_said 2 "is larger than 1.0 MiB; --max-size" "$cttool" --max-size 1M check /dev/zero
expect_said 2 "FILE is required" "$cttool" check
expect_said 2 "there is no option --levl; did you mean --level" "$cttool" check "$whole" --levl odd
expect_said 2 "--level" "$cttool" check "$whole" --level grave

# Pipes and archives.
expect 0 "-: clean" bash -c '"$0" check - <"$1"' "$cttool" "$whole"
expect 0 "clean" bash -c 'cat "$1" | "$0" check -' "$cttool" "$whole"
gzip -c <"$whole" >"$work/whole.gz"
expect 0 "clean" "$cttool" check "$work/whole.gz"
head -c 40000 "$work/whole.gz" >"$work/half.gz"
expect 1 "CT-ARCHIVE         at 0: the archive: it ends too early" "$cttool" check "$work/half.gz"
[[ $(<"$work/out") == *"CT-SIZE"* ]] || complain "the trace in half of an archive is too short"

# Many files come in their order, the same on each run, and as if each were checked alone.
files=()
for i in {1..150}; do
  cp -- "$whole" "$work/$i.ct"
  ((i % 3)) || cp -- "$work/hole.ct" "$work/$i.ct"
  ((i % 7)) || cp -- "$odd" "$work/$i.ct"
  files+=("$work/$i.ct")
done
expect 1 "" "$cttool" check "${files[@]}"
cp "$work/out" "$work/together"
for file in "${files[@]}"; do "$cttool" check "$file" || true; done >"$work/alone"
cmp "$work/together" "$work/alone" || complain "files together are not what they are alone"
expect 1 "" "$cttool" check "${files[@]}" --format jsonl
(($(wc -l <"$work/out") == ${#files[@]})) || complain "jsonl has not a line a file"

# Outputs that fail.
expect_said 2 "No space left on device" bash -c '"$0" check "$1" >/dev/full' "$cttool" "$whole"
for format in text json jsonl; do
  expect_said 2 "No space left on device" \
    bash -c '"$0" check "${@:2}" --format "$1" >/dev/full' "$cttool" "$format" "${files[@]}"
  # A reader that leaves ends the run without a word.
  mkfifo "$work/pipe"
  head -c 10 "$work/pipe" >/dev/null &
  status=0
  "$cttool" check "${files[@]}" --format "$format" --limit 0 >"$work/pipe" 2>"$work/err" || status=$?
  wait
  rm "$work/pipe"
  ((status == 2)) || complain "$format: status $status when nobody reads on"
  [[ ! -s $work/err ]] || complain "$format: something is said when nobody reads on"
done

# No control character reaches a terminal.
name=$work/$'a\e[31m\nb.ct'
cp -- "$work/short.ct" "$name"
expect 1 '\x1b[31m\n' "$cttool" check "$name"
if grep -q $'\e' "$work/out"; then complain "an escape sequence in the name of a file is printed"; fi
expect 1 $'\e[31mfatal' "$cttool" --color always check "$work/short.ct"

# Other verbs tell of this one.
expect_said 2 "cttool check" "$cttool" top "$work/short.ct"
[[ $(<"$work/err") == *"Expected $size bytes, but got 200000 bytes"*"cttool salvage"* ]] ||
  complain "a file of the wrong length is not sent on: $(<"$work/err")"
expect_said 2 "Invalid Code Trace dump file magic" "$cttool" top "$cttool"
if grep -q salvage "$work/err"; then complain "no trace can be made of what is none"; fi
exit "$((failures != 0))"
