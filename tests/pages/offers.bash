#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# offers.bash COMPLETION LINE: what bash offers at the end of the line, one a line: the word and,
# behind a tab, its description if it has one.
# shellcheck disable=SC1090,SC2034
source /usr/share/bash-completion/bash_completion
source "$1"
program=${2%% *}
[[ $(complete -p "$program") == *"-F _$program $program"* ]] || exit 1

# As readline tells it: "=" is a word of its own, and this is a list that is only shown.
COMP_LINE=$2
COMP_POINT=${#2}
COMP_TYPE=63
read -ra COMP_WORDS <<<"${2//=/ = }"
[[ $2 != *[\ ] ]] || COMP_WORDS+=('')
COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
"_$program"
((${#COMPREPLY[@]} == 0)) || printf '%s\n' "${COMPREPLY[@]}" | sed 's/^\(-[^ ]*\) \+/\1\t/'
