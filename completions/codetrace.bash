# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# Completion for codetrace(1), for bash-completion.

_codetrace_options() {
  local rows=(
    '-B --binary:Outputs the Code Trace binary data as hex.'
    '-D --dump:Dumps all the checkpoints in the Code Trace file.'
    '-H --headers:Dumps all the Code Trace file headers.'
    '-h --help:Print this help message and exit.'
    '-J --json:Outputs the Code Trace as a JSON document.'
    '-o --output:The output is stored to the file <filename>.'
    '-T --text:Outputs the Code Trace using a human-readable text format.'
    '-V --version:Prints version information and exits.'
    '-v:Makes the Code Trace tool more verbose.'
  )
  local row option described=()
  for row in "${rows[@]}"; do
    for option in ${row%%:*}; do
      [[ $option == "$1"* ]] || continue
      COMPREPLY+=("$option")
      described+=("$(printf '%-11s %s' "$option" "${row#*:}")")
    done
  done
  # Descriptions are for a list of several that is only shown; all else goes to the command line.
  local only_shown=63
  if ((COMP_TYPE == only_shown && ${#COMPREPLY[@]} > 1)); then COMPREPLY=("${described[@]}"); fi
}

# Traces and folders; any file when there is no such trace.
_codetrace_traces() {
  _filedir ct
  if [[ " ${COMPREPLY[*]} " != *.[cC][tT]\ * ]]; then
    COMPREPLY=()
    _filedir
  fi
}

_codetrace() {
  # shellcheck disable=SC2034
  local cur prev words cword split
  _init_completion -s || return
  if [[ $prev == --output || $prev =~ ^-[^-o]*o$ ]]; then
    _filedir
  elif [[ $cur == -* ]]; then
    _codetrace_options "$cur"
  else
    _codetrace_traces
  fi
}

complete -F _codetrace codetrace
