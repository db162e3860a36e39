# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# Completion for cttool(1), for bash-completion. Made by tools/cttool-pages.py from the help texts.

# Sets `options` to those of the verb.
_cttool_options() {
  case $1 in
    summary) options='-h --help --format -v --verbose --color --no-pager --full --max-size' ;;
    top) options='-h --help --by --of --callers --callees --under --limit --builtin --user --format -v --verbose --color --no-pager --full --max-size' ;;
    tree) options='-h --help --depth --min --under --hide --only --no-builtin --fold --values --limit --full --format -v --verbose --color --no-pager --full --max-size' ;;
    calls) options='-h --help --arg --returned --threw --open --min --under --file --where --path --count --by --limit --format -v --verbose --color --no-pager --full --max-size' ;;
    show) options='-h --help --source --limit --format -v --verbose --color --no-pager --full --max-size' ;;
    response) options='-h --help --body --blame --limit --full --format -v --verbose --color --no-pager --full --max-size' ;;
    sql) options='-h --help --format --timeout -v --verbose --color --no-pager --full --max-size' ;;
    export) options='-h --help --to -o --output --table --values --weight --gzip --depth --min --under --hide --only --no-builtin -v --verbose --color --no-pager --full --max-size' ;;
    report) options='-h --help -o --output --max-size --depth --min --under --hide --only --no-builtin -v --verbose --color --no-pager --full --max-size' ;;
    check) options='-h --help --level --limit --format -v --verbose --color --no-pager --full --max-size' ;;
    salvage) options='-h --help -o --output --data --add-data --format -v --verbose --color --no-pager --full --max-size' ;;
    redact) options='-h --help -o --output --rules --value --key --strict --format -v --verbose --color --no-pager --full --max-size' ;;
    *) options='-V --version -h --help -v --verbose --color --no-pager --full --max-size' ;;
  esac
}

# Offers what may stand behind an option; fails if that is nothing special.
_cttool_value() {
  case $1$2 in
    summary--format) mapfile -t COMPREPLY < <(compgen -W 'text json' -- "$cur") ;;
    summary--color) mapfile -t COMPREPLY < <(compgen -W 'auto always never' -- "$cur") ;;
    summary--max-size) : ;;
    top--by) mapfile -t COMPREPLY < <(compgen -W 'own total calls memory' -- "$cur") ;;
    top--of) mapfile -t COMPREPLY < <(compgen -W 'function class namespace folder file line caller' -- "$cur") ;;
    top--callers) : ;;
    top--callees) : ;;
    top--under) : ;;
    top--limit) : ;;
    top--format) mapfile -t COMPREPLY < <(compgen -W 'text json csv' -- "$cur") ;;
    top--color) mapfile -t COMPREPLY < <(compgen -W 'auto always never' -- "$cur") ;;
    top--max-size) : ;;
    tree--depth) : ;;
    tree--min) : ;;
    tree--under) : ;;
    tree--hide) : ;;
    tree--only) : ;;
    tree--fold) mapfile -t COMPREPLY < <(compgen -W 'runs all none' -- "$cur") ;;
    tree--values) mapfile -t COMPREPLY < <(compgen -W 'none short full' -- "$cur") ;;
    tree--limit) : ;;
    tree--format) mapfile -t COMPREPLY < <(compgen -W 'text json' -- "$cur") ;;
    tree--color) mapfile -t COMPREPLY < <(compgen -W 'auto always never' -- "$cur") ;;
    tree--max-size) : ;;
    calls--arg) : ;;
    calls--returned) : ;;
    calls--min) : ;;
    calls--under) : ;;
    calls--file) : ;;
    calls--where) : ;;
    calls--by) mapfile -t COMPREPLY < <(compgen -W 'start total own memory' -- "$cur") ;;
    calls--limit) : ;;
    calls--format) mapfile -t COMPREPLY < <(compgen -W 'text json jsonl csv' -- "$cur") ;;
    calls--color) mapfile -t COMPREPLY < <(compgen -W 'auto always never' -- "$cur") ;;
    calls--max-size) : ;;
    show--limit) : ;;
    show--format) mapfile -t COMPREPLY < <(compgen -W 'text json' -- "$cur") ;;
    show--color) mapfile -t COMPREPLY < <(compgen -W 'auto always never' -- "$cur") ;;
    show--max-size) : ;;
    response--limit) : ;;
    response--format) mapfile -t COMPREPLY < <(compgen -W 'text json' -- "$cur") ;;
    response--color) mapfile -t COMPREPLY < <(compgen -W 'auto always never' -- "$cur") ;;
    response--max-size) : ;;
    sql--format) mapfile -t COMPREPLY < <(compgen -W 'table csv json jsonl markdown' -- "$cur") ;;
    sql--timeout) : ;;
    sql--color) mapfile -t COMPREPLY < <(compgen -W 'auto always never' -- "$cur") ;;
    sql--max-size) : ;;
    export--to) mapfile -t COMPREPLY < <(compgen -W 'speedscope chrome callgrind folded jsonl csv sqlite' -- "$cur") ;;
    export-o|export--output) _filedir ;;
    export--table) : ;;
    export--values) mapfile -t COMPREPLY < <(compgen -W 'none short full' -- "$cur") ;;
    export--weight) mapfile -t COMPREPLY < <(compgen -W 'own memory calls' -- "$cur") ;;
    export--depth) : ;;
    export--min) : ;;
    export--under) : ;;
    export--hide) : ;;
    export--only) : ;;
    export--color) mapfile -t COMPREPLY < <(compgen -W 'auto always never' -- "$cur") ;;
    export--max-size) : ;;
    report-o|report--output) _filedir ;;
    report--max-size) : ;;
    report--depth) : ;;
    report--min) : ;;
    report--under) : ;;
    report--hide) : ;;
    report--only) : ;;
    report--color) mapfile -t COMPREPLY < <(compgen -W 'auto always never' -- "$cur") ;;
    check--level) mapfile -t COMPREPLY < <(compgen -W 'fatal lost odd' -- "$cur") ;;
    check--limit) : ;;
    check--format) mapfile -t COMPREPLY < <(compgen -W 'text json jsonl' -- "$cur") ;;
    check--color) mapfile -t COMPREPLY < <(compgen -W 'auto always never' -- "$cur") ;;
    check--max-size) : ;;
    salvage-o|salvage--output) _filedir ;;
    salvage--data) _filedir ;;
    salvage--add-data) _filedir ;;
    salvage--format) mapfile -t COMPREPLY < <(compgen -W 'text json' -- "$cur") ;;
    salvage--color) mapfile -t COMPREPLY < <(compgen -W 'auto always never' -- "$cur") ;;
    salvage--max-size) : ;;
    redact-o|redact--output) _filedir ;;
    redact--rules) _filedir ;;
    redact--value) : ;;
    redact--key) _filedir ;;
    redact--format) mapfile -t COMPREPLY < <(compgen -W 'text json' -- "$cur") ;;
    redact--color) mapfile -t COMPREPLY < <(compgen -W 'auto always never' -- "$cur") ;;
    redact--max-size) : ;;
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
    mapfile -t COMPREPLY < <(compgen -W 'summary top tree calls show response sql export report check salvage redact help' -- "$cur")
  else
    _filedir
  fi
}

complete -F _cttool cttool
