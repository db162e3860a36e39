#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# pipes.sh FOLDER: whether no script pipes into a program that stops reading early, as `head` and
# a quiet grep do. What is in front of the pipe may then end by SIGPIPE, now and then, and with pipefail
# the line fails, although all went well. A variable or a file in between mends it.
set -euo pipefail
# shellcheck source=tests/docs/files.sh
source "$(dirname -- "${BASH_SOURCE[0]}")/files.sh"
cd -- "$1"

scripts=()
while IFS= read -r -d '' path; do
  IFS= read -r first <"$path" || true
  if [[ $path == *.sh || $first =~ ^'#!'.*sh$ ]]; then scripts+=("$path"); fi
done < <(project_files | grep -zvE '^(fuzz/corpus|tests/data)/|\.(ct|md)$')
((${#scripts[@]})) || {
  echo "no scripts in $1"
  exit 1
}

# A line that ends in a pipe goes on in the next one.
found=$(awk '
  FNR == 1 { line = "" }
  /^ *#/ { next }
  { line = line $0 }
  line ~ /[^|]\|&?$/ { next }
  line ~ /[^|]\|&? *(head( |$)|[a-z]?grep( +[^ |]+)* +(-[A-Za-z]*[qm]|--(quiet|silent|max-count))|awk [^|]*[{; ]exit)/ {
    print FILENAME ":" FNR ": " line
  }
  { line = "" }' "${scripts[@]}")
[[ -z $found ]] || {
  printf 'these stop reading early:\n%s\n' "$found"
  exit 1
}
