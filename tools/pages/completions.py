# SPDX-License-Identifier: MIT
"""Completions of cttool for bash, zsh and fish, from its help."""
MARK = "# SPDX-License-Identifier: MIT\n"
MADE = "# Completion for cttool(1), for {}. Made by tools/cttool-pages.py from the help texts.\n\n"


def all_options(whole, verb):
    return verb.options + [row for row in whole.options
                           if row.names[-1] not in ("--help", "--version")]


def bash(whole, verbs):
    text = MARK + "# shellcheck shell=bash\n" + MADE.format("bash-completion")
    text += "# Sets `options` to those of the verb.\n_cttool_options() {\n  case $1 in\n"
    for verb in verbs:
        names = " ".join(name for row in all_options(whole, verb) for name in row.names)
        text += f"    {verb.name}) options='{names}' ;;\n"
    names = " ".join(name for row in whole.options for name in row.names)
    text += f"    *) options='{names}' ;;\n  esac\n}}\n\n"
    text += ("# Offers what may stand behind an option; fails if that is nothing special.\n"
             "_cttool_value() {\n  case $1$2 in\n")
    seen = set()
    for verb in verbs:
        for row in all_options(whole, verb):
            if not row.takes_value():
                continue
            case = "|".join(verb.name + name for name in row.names)
            if row.words():
                offer = f'mapfile -t COMPREPLY < <(compgen -W \'{" ".join(row.words())}\' -- "$cur")'
            else:
                offer = "_filedir" if row.takes_file() else ":"
            if case not in seen:
                text += f"    {case}) {offer} ;;\n"
            seen.add(case)
    text += "    *) return 1 ;;\n  esac\n}\n\n"
    text += """_cttool() {
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
"""
    names = " ".join(verb.name for verb in verbs)
    text += f"    mapfile -t COMPREPLY < <(compgen -W '{names} help' -- \"$cur\")\n"
    return text + "  else\n    _filedir\n  fi\n}\n\ncomplete -F _cttool cttool\n"


def zsh_quoted(text):
    for mark in "\\[]:":
        text = text.replace(mark, "\\" + mark)
    return text.replace("'", "'\\''")


def zsh_option(row):
    value = ""
    if row.words():
        value = f":value:({' '.join(row.words())})"
    elif row.takes_file():
        value = ":file:_files"
    elif row.takes_value():
        value = f":{zsh_quoted(row.value)}: "
    lines = ""
    for name in row.names:
        sign = "=" if value and name.startswith("--") else ""
        lines += f"      '*{name}{sign}[{zsh_quoted(row.meaning)}]{value}' \\\n"
    return lines


def zsh(whole, verbs):
    text = "#compdef cttool\n" + MARK + MADE.format("zsh")
    text += "_cttool() {\n  local verb='' word\n  for word in ${words[2,CURRENT-1]}; do\n"
    text += "    [[ $word == -* ]] || { verb=$word; break }\n  done\n  case $verb in\n"
    for verb in verbs:
        text += f"    {verb.name}) _arguments -s -S \\\n      ':verb: ' \\\n"
        text += "".join(zsh_option(row) for row in all_options(whole, verb))
        text += "      '*:file:_files' ;;\n"
    listed = "\n".join(f"      '{verb.name}:{zsh_quoted(verb.question)}'" for verb in verbs)
    text += f"    ''|help) local -a verbs=(\n{listed}\n      'help:Print the help of a verb.')\n"
    text += "      _arguments -s -S \\\n"
    text += "".join(zsh_option(row) for row in whole.options)
    return text + ("      '*:verb:{_describe verb verbs}' ;;\n"
                   "    *) _files ;;\n  esac\n}\n\n_cttool \"$@\"\n")


def fish_quoted(text):
    return "'" + text.replace("\\", "\\\\").replace("'", "\\'") + "'"


def fish_option(condition, row):
    line = f"complete -c cttool{condition}"
    for name in row.names:
        line += f" -l {name[2:]}" if name.startswith("--") else f" -s {name[1:]}"
    if row.words():
        line += f" -x -a '{' '.join(row.words())}'"
    elif row.takes_file():
        line += " -r -F"
    elif row.takes_value():
        line += " -x"
    return line + f" -d {fish_quoted(row.meaning)}\n"


def fish(whole, verbs):
    text = MARK + MADE.format("fish")
    names = " ".join(verb.name for verb in verbs)
    none = f" -n 'not __fish_seen_subcommand_from {names}'"
    for verb in verbs:
        text += f"complete -c cttool{none} -f -a {verb.name} -d {fish_quoted(verb.question)}\n"
    text += f"complete -c cttool{none} -f -a help -d 'Print the help of a verb.'\n"
    for row in whole.options:
        text += fish_option("" if row.names[-1] not in ("--help", "--version") else none, row)
    for verb in verbs:
        text += "\n"
        for row in verb.options:
            text += fish_option(f" -n '__fish_seen_subcommand_from {verb.name}'", row)
    return text
