# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# Completion for cttool(1), for bash-completion. Made by tools/cttool-pages.py from the help texts.

# Sets `options` to those of the verb.
_cttool_options() {
  case $1 in
    top) options='-h --help --by --of --callers --callees --under --limit --builtin --user --full --format -v --verbose' ;;
    calls) options='-h --help --arg --returned --threw --open --min --under --file --path --count --limit --full --format -v --verbose' ;;
    show) options='-h --help --format -v --verbose' ;;
    *) options='-V --version -h --help -v --verbose' ;;
  esac
}

# Offers what may stand behind an option; fails if that is nothing special.
_cttool_value() {
  case $1$2 in
    top--by) mapfile -t COMPREPLY < <(compgen -W 'own total calls memory' -- "$cur") ;;
    top--of) mapfile -t COMPREPLY < <(compgen -W 'function class namespace folder file line caller' -- "$cur") ;;
    top--callers) : ;;
    top--callees) : ;;
    top--under) : ;;
    top--limit) : ;;
    top--format) mapfile -t COMPREPLY < <(compgen -W 'text json csv' -- "$cur") ;;
    calls--arg) : ;;
    calls--returned) : ;;
    calls--min) : ;;
    calls--under) : ;;
    calls--file) : ;;
    calls--limit) : ;;
    calls--format) mapfile -t COMPREPLY < <(compgen -W 'text json jsonl csv' -- "$cur") ;;
    show--format) mapfile -t COMPREPLY < <(compgen -W 'text json' -- "$cur") ;;
    *) return 1 ;;
  esac
}

_cttool() {
  # shellcheck disable=SC2034
  local cur prev words cword split
  local options verb='' word
  _init_completion -s || return
  for word in "${words[@]:1:cword-1}"; do
    if [[ $word != -* ]]; then
      verb=$word
      break
    fi
  done
  if _cttool_value "$verb" "$prev"; then
    return
  elif [[ $cur == -* ]]; then
    _cttool_options "$verb"
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$cur")
  elif [[ ! $verb || $verb == help ]]; then
    mapfile -t COMPREPLY < <(compgen -W 'top calls show help' -- "$cur")
  else
    _filedir
  fi
}

complete -F _cttool cttool
