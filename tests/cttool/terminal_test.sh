#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# terminal_test.sh CTTOOL EXAMPLES: colours, the pager and the width, in a terminal that `script` makes.
# shellcheck disable=SC2016 # the terminal's shell expands what stands in single quotes
set -euo pipefail
cttool=$1 notes=$2/notes.ct
work=$(mktemp -d)
trap 'rm -rf -- "$work"' EXIT
failures=0
unset NO_COLOR PAGER LESS
export TERM=xterm cttool notes work

if ! script -qec true /dev/null >"$work/out" 2>&1 </dev/null; then
  echo "/dev/pts is missing or cannot be used: no terminal"
  exit 77
fi

complain() {
  echo "$*"
  failures=$((failures + 1))
}
# What a terminal of 60 columns gets to see of a shell command.
seen() { script -qec "stty cols 60 rows 24; $1" /dev/null </dev/null | tr -d '\r'; }
has_colors() { grep -q $'\e\[1m' "$1"; }

# A pager that tells what it is given.
cat >"$work/pager" <<'PAGER'
#!/bin/sh
cat >"$work/paged"
echo "the pager has $(wc -l <"$work/paged") lines"
PAGER
chmod +x "$work/pager"

seen '"$cttool" --no-pager top "$notes"' >"$work/out"
has_colors "$work/out" || complain "no colours on a terminal"
[[ $(sed 's/\x1b\[[0-9;]*m//g' "$work/out" | awk '{ if (length($0) > 64) print }') == "" ]] ||
  complain "wider than the terminal"
grep -q '…' "$work/out" || complain "nothing was cut to the width"
seen '"$cttool" --no-pager --full top "$notes"' >"$work/out"
grep -q '…$' "$work/out" && complain "cut in spite of --full"
seen '"$cttool" --no-pager top "$notes" --full' | cmp - "$work/out" || complain "--full behind the verb"

# A summary is as wide as the terminal, and whole if that is asked for.
plain() { seen "export TERM=dumb; $1"; }
plain '"$cttool" --no-pager summary "$notes"' >"$work/out"
[[ $(LC_ALL=C.UTF-8 grep -E '^.{61}' "$work/out") == "" ]] || complain "a summary wider than the terminal"
LC_ALL=C.UTF-8 grep -qE '^.{60}$' "$work/out" || complain "a summary narrower than the terminal"
plain '"$cttool" --no-pager --full summary "$notes"' >"$work/out"
grep -q '…' "$work/out" || complain "no line says what was left out"
grep -q 'at /usr/share/php/Parsedown/Parsedown.php:39$' "$work/out" || complain "a place is cut in spite of --full"

for command in 'NO_COLOR=1 "$cttool" --no-pager top "$notes"' 'TERM=dumb "$cttool" --no-pager top "$notes"' \
  '"$cttool" --no-pager --color never top "$notes"' '"$cttool" --no-pager top "$notes" | cat'; do
  seen "$command" >"$work/out"
  [[ -s $work/out ]] || complain "no output: $command"
  has_colors "$work/out" && complain "colours: $command"
done
seen 'NO_COLOR= "$cttool" --no-pager top "$notes"' >"$work/out"
has_colors "$work/out" || complain "an empty NO_COLOR counts"
"$cttool" --color always top "$notes" >"$work/out"
has_colors "$work/out" || complain "no colours though always"
"$cttool" top "$notes" >"$work/plain"
has_colors "$work/plain" && complain "colours in a file"
sed 's/\x1b\[[0-9;]*m//g' "$work/out" | cmp - "$work/plain" || complain "colours change the text"

# The pager gets all of it, only on a terminal, and only if it is wanted.
seen '"$cttool" --no-pager top "$notes"' >"$work/out"
lines=$(wc -l <"$work/out")
[[ $(seen 'PAGER="$work/pager" "$cttool" top "$notes"') == *"the pager has $lines lines"* ]] ||
  complain "not shown by the pager"
[[ $(seen 'PAGER="cat >\$work/paged; echo a pager of the shell" "$cttool" top "$notes"') == \
  *"a pager of the shell"* ]] || complain "not shown by a pager of the shell"
for command in 'PAGER="$work/pager" "$cttool" --no-pager top "$notes"' \
  'PAGER="$work/pager" "$cttool" top "$notes" | cat' 'PAGER= "$cttool" top "$notes"' \
  'PAGER=cat "$cttool" top "$notes"' 'PAGER="$work/missing" "$cttool" top "$notes"'; do
  seen "$command" >"$work/out"
  grep -q 'own ms' "$work/out" || complain "not shown: $command"
  grep -q 'the pager has' "$work/out" && complain "paged: $command"
done
[[ $(seen 'PAGER="$work/missing | cat" "$cttool" top "$notes"; echo status $?') == *"status 0"* ]] ||
  complain "the status of a pipe of pagers"
[[ $(seen 'PAGER="\"\$work/missing\"" "$cttool" top "$notes"; echo status $?') == *"--no-pager"*"status 2"* ]] ||
  complain "output that went nowhere is no success"
# Leaving it early is no error and says nothing.
[[ $(seen 'PAGER="head -1" "$cttool" calls "$notes" | cat; PAGER="head -1" "$cttool" calls "$notes"; echo status $?' |
  tail -1) == "status 0" ]] || complain "leaving the pager early is an error"
[[ $(seen 'PAGER="head -1" "$cttool" calls "$notes"' | wc -l) == 1 ]] || complain "noise of a pager that was left"
# The status is that of the verb.
[[ $(seen 'PAGER="$work/pager" "$cttool" calls "$notes" nothing; echo status $?') == *"status 1"* ]] ||
  complain "the status of a paged run"
if command -v less >"$work/out"; then
  [[ $(seen '"$cttool" top "$notes" --limit 3') == *"own ms"* ]] || complain "less shows nothing"
fi

# Ctrl-C is the pager's: the run goes on until the pager ends.
cat >"$work/stubborn" <<'PAGER'
#!/bin/sh
kill -INT "$PPID"
cat >"$work/paged"
echo "the end"
PAGER
chmod +x "$work/stubborn"
interrupted=$(seen 'PAGER="$work/stubborn" "$cttool" calls "$notes"; echo status $?')
[[ $interrupted == *"the end"*"status 0"* ]] || complain "Ctrl-C ends the run under the pager: $interrupted"

# A body with control characters reaches a file as it is, and a terminal escaped.
seen '"$cttool" --no-pager response "$notes" --body' >"$work/out"
grep -q '<title>Notes</title>' "$work/out" || complain "no body on the terminal"
# A terminal is no place for an export: it goes to a file named after the trace, if there is none.
for pair in speedscope:notes.speedscope.json chrome:notes.trace.json callgrind:callgrind.out.notes \
  folded:notes.folded jsonl:notes.jsonl csv:notes.csv sqlite:notes.sqlite; do
  export format=${pair%%:*} name=${pair#*:}
  seen 'cd -- "$work" && "$cttool" export "$notes" --to "$format"' >"$work/out"
  grep -q "wrote $name" "$work/out" || complain "export --to $format does not say where it went"
  "$cttool" export "$notes" --to "$format" | cmp - "$work/$name" || complain "$name is another export"
  echo mine >"$work/$name"
  seen 'cd -- "$work" && "$cttool" export "$notes" --to "$format"; echo "status $?"' >"$work/out"
  grep -q "$name is there already; -o $name writes it anew" "$work/out" || complain "$name is not spared"
  grep -q "status 2" "$work/out" || complain "no status for a $name that is there"
  [[ $(<"$work/$name") == mine ]] || complain "$name was written over"
done
seen '"$cttool" export "$notes" --to folded -o -' >"$work/out"
grep -q '^request;' "$work/out" || complain "-o - does not write to a terminal"

exit "$((failures != 0))"
