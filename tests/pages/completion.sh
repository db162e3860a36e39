#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# completion.sh BINARY SHELL COMPLETION: whether that shell, which reads COMPLETION, offers the
# options of `codetrace -h` with their descriptions, without the one that writes nothing, and files where
# files belong. Status 77 if that takes a terminal and there is none.
set -euo pipefail
# shellcheck source=tests/pages/help_options.sh
source "$(dirname -- "$0")/help_options.sh"
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
mkdir folder
touch notes.ct other.log
export HOME=$folder # no settings of whoever runs this

# offered LINE: what TAB offers at the end of the line, one a line. Shells differ in whether a file
# name shows that it is a folder's, and the option that is joined to it.
offered() { "$shell" "$offers" "$completion" "$1" | sed 's,/$,,; s,^--output=,,'; }

# expect LINE TEXT: that all of this is offered, in any order.
expect() {
  diff <(sort <<<"$2") <(offered "$1" | sort) && return
  echo "$shell: '$1' should offer the lines with <, and offers those with >"
  failures=$((failures + 1))
}

words=$(help_words "$binary" | grep -vE '^(-S|--sqlite)\b')
expect 'codetrace -' "$words"
expect 'codetrace --he' "$(grep '^--he' <<<"$words")"
expect 'codetrace notes.ct --he' "$(grep '^--he' <<<"$words")"

# Bash and zsh offer other files when no trace fits, fish offers them behind the traces.
traces=$'folder\nnotes.ct'
[[ $shell != fish ]] || traces+=$'\nother.log'
expect 'codetrace ' "$traces"
expect 'codetrace -J no' 'notes.ct'
expect 'codetrace o' 'other.log'
[[ $(offered 'codetrace ' | grep -v '^folder$')$'\n' == notes.ct$'\n'* ]] || {
  echo "$shell: traces do not stand before other files"
  failures=$((failures + 1))
}

files=$'folder\nnotes.ct\nother.log'
expect 'codetrace -o ' "$files"
expect 'codetrace --output ' "$files"
expect 'codetrace --output=' "$files"
expect 'codetrace notes.ct -Ho o' 'other.log'
((failures == 0))
