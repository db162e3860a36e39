# SPDX-License-Identifier: MIT
# Sourced by the zsh on whose command line offers.zsh types: writes what completion adds to
# $OFFERED, and shows READY when it is ready for a line.
fpath=($COMPLETION_FOLDER $fpath)
autoload -Uz compinit
compinit -u -D
zstyle ':completion:*' list-grouped false
LISTMAX=1000

compadd() {
  local -a words shown
  local argument array
  # What only asks which words would match adds nothing.
  for argument in "${@[1,(i)(-|--)]}"; do
    [[ $argument == -*[OAD] ]] && { builtin compadd "$@"; return; }
  done
  # Behind -d stands the name of an array with a line such as "--json  -- As JSON." for each word.
  (( ${@[(I)-d]} )) && array=${@[${@[(I)-d]}+1]} && shown=("${(@P)array}")
  builtin compadd -A words -D shown "$@"
  local -i i
  for (( i = 1; i <= $#words; ++i )); do
    print -r -- "$words[i]${shown[i]:+"	${shown[i]#*-- }"}" >>$OFFERED
  done
  builtin compadd "$@"
}

PROMPT=READY
