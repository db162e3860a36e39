#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# redact_manners_test.sh CTTOOL EXAMPLES: where copies go, what is said of them, of rules and of keys, and of
# options that make no sense.
set -euo pipefail
cttool=$1 examples=$2
# shellcheck source=tests/cttool/expect.sh
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/expect.sh"
notes=$work/notes.ct
cp -- "$examples/notes.ct" "$notes"
mkdir "$work/to"
to=$work/to/copy.ct
printf 'a key' >"$work/key"
: >"$work/empty"

# The report goes to standard error, the copy to standard output if it is asked for.
expect 0 "values masked" "$cttool" redact "$notes" -o "$to" --key "$work/key" --value autoload
[[ ! -s $work/out ]] || fail "says something on standard output"
[[ $(cat "$work/err") == *"--value"* && $(cat "$work/err") != *autoload* ]] || fail "names the secret, or not its rule"
expect 0 "values masked" "$cttool" redact "$notes" -o - --key "$work/key" --value autoload
cmp -- "$to" "$work/out" || fail "-o - differs"
expect 0 "" "$cttool" redact "$notes" -o "$work/to/other.ct" --format json
[[ ! -s $work/err ]] || fail "speaks twice: $(cat "$work/err")"
"$cttool" summary "$to" >"$work/text" || fail "a copy is a trace"
"$cttool" calls "$to" '*' >"$work/text" || fail "a copy has calls"
[[ $(cat "$work/text") != *autoload* ]] || fail "the value is still there"
gzip -c "$notes" >"$work/notes.ct.gz"
expect 0 "" "$cttool" redact "$work/notes.ct.gz" -o "$work/to/packed.ct" --key "$work/key" --value autoload
cmp -- "$to" "$work/to/packed.ct" || fail "an archive differs"
rm -- "$work/to/packed.ct" "$work/to/other.ct"

# What cannot be written is told, and what was there before stays.
expect 2 "No space left on device" "$cttool" redact "$notes" -o /dev/full
echo before >"$to"
expect 2 "" bash -c 'ulimit -f 4; exec "$@"' - "$cttool" redact "$notes" -o "$to"
expect 2 "" "$cttool" redact "$work/missing.ct" -o "$to"
expect 2 "less than 6 bytes" "$cttool" redact "$notes" -o "$to" --value 12345
[[ $(cat "$work/err") != *12345* ]] || fail "repeats what is secret"
expect 2 "an empty key hides nothing" "$cttool" redact "$notes" -o "$to" --key "$work/empty"
expect 2 "No such file" "$cttool" redact "$notes" -o "$to" --key "$work/missing"
expect 2 "do not both go" "$cttool" redact "$notes" -o - --format json
[[ $(<"$to") == before ]] || fail "a failed run left half of a file"
left=$(find "$work/to" -type f -printf '%f\n' | grep -vx 'copy\.ct' || true)
[[ -z $left ]] || fail "left over: $left"
expect 2 "it is the Code Trace file itself" "$cttool" redact "$notes" -o "$notes"
expect 2 "required" "$cttool" redact "$notes"

# Rules.
rules=$work/our.rules
while IFS='|' read -r line words; do
  printf 'key fine\n%s\n' "$line" >"$rules"
  expect 2 "line 2: $words" "$cttool" redact "$notes" -o "$to" --rules "$rules"
done <<'LINES'
word password|there is no rule "word"
key|nothing behind "key"
shape star|there is no shape "star"
function f 1|a function is NAME : ARGUMENTS
function f : one|"one" is no number of an argument
function f : 1 if 2|"if" is none of named, when and keys
function f : 1 when 2|when which argument is what?
header x as y|a header is credentials, cookies or cookie
no word x|there is no rule "word" to take away
LINES
printf '# ours\nfunction Note::fromText : 1\n' >"$rules"
expect 0 "function Note::fromText" "$cttool" redact "$notes" -o "$to" --rules "$rules"
((failures == 0))
