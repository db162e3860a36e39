#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# companion_completion.sh BINARY SHELL COMPLETION: whether that shell, which reads COMPLETION, offers the
# verbs of cttool, the options of each, the words that an option takes, and files where files belong.
# Status 77 if that takes a terminal and there is none.
set -euo pipefail
binary=$(realpath -- "$1")
shell=$2
completion=$(realpath -- "$3")
offers=$(realpath -- "$(dirname -- "$0")")/offers.$shell
failures=0

if [[ $shell == zsh ]] && ! script -qec true /dev/null </dev/null >/dev/null 2>&1; then
  echo "SKIPPED: zsh completes at a terminal only, and /dev/pts is missing or cannot be used"
  exit 77
fi

folder=$(mktemp -d)
trap 'rm -rf -- "$folder"' EXIT
cd -- "$folder"
touch notes.ct other.log
export HOME=$folder # no settings of whoever runs this

# offered LINE: the words that TAB offers at the end of the line, without what the shells add.
offered() { "$shell" "$offers" "$completion" "$1" | sed -E 's/\t.*//; s/=$//; s/[[:space:]]+$//' | sort -u; }

# expect LINE WORDS: that just these words are offered, one a line.
expect() {
  diff <(sort -u <<<"$2") <(offered "$1") && return
  echo "$shell: '$1' should offer the lines with <, and offers those with >"
  failures=$((failures + 1))
}

# long_options HELP
long_options() { grep -oE '^  (-., )?--[a-z-]+' <<<"$1" | grep -oE -- '--[a-z-]+' | sort -u; }

help=$("$binary" help | sed "/^Examples:/,\$d")
verbs=$(grep -E '^  [a-z]' <<<"$help" | awk '{ print $1 }')
(($(wc -l <<<"$verbs") > 3)) || { echo "too few verbs"; exit 1; }
everywhere=$(long_options "$help" | grep -vE -- '--(help|version)')
expect 'cttool ' "$verbs"
expect 'cttool to' 'top'
for verb in $verbs; do
  [[ $verb != help ]] || continue
  expect "cttool $verb --" "$(printf '%s\n' "$(long_options "$("$binary" help "$verb")")" "$everywhere")"
done
expect 'cttool top --by ' "$(printf '%s\n' calls memory own total)"
expect 'cttool top notes.ct --of cl' 'class'
expect 'cttool top no' 'notes.ct'
expect 'cttool calls o' 'other.log'
((failures == 0))
