#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# man_examples.sh BINARY PAGE TRACE...: runs the command lines of codetrace(1) on traces, and on the
# same with calls that never ended. Each must do its work and have something to show for it.
set -euo pipefail
# shellcheck source=tests/pages/page_text.sh
source "$(dirname -- "$0")/page_text.sh"
unfinished=$(realpath -- "$(dirname -- "$0")/../cookbook/unfinished.py")
mapfile -t traces < <(realpath -- "${@:3}")
folder=$(mktemp -d)
trap 'rm -rf -- "$folder"' EXIT
mkdir "$folder/bin"
ln -s -- "$(realpath -- "$1")" "$folder/bin/codetrace"
export PATH=$folder/bin:$PATH

# A command begins behind "$ " and goes on in lines that are further in.
mapfile -d '' commands < <(page_section "$2" EXAMPLES | awk '
  /^           \$ / { printf "%s%s", separator, substr($0, 14); separator = "\0"; inside = 1; next }
  /^            / && inside { print ""; printf "%s", $0; next }
  { inside = 0 }')
((${#commands[@]})) || { echo "no command found"; exit 1; }

fail() {
  echo "$1: $command"
  cat err
  exit 1
}
run_commands() {
  gzip -kf trace.ct
  for command in "${commands[@]}"; do
    rm -f report.txt
    bash -o pipefail -c "$command" >out 2>err || fail "failed"
    [[ ! -s err ]] || fail "complained"
    [[ -s out || -s report.txt ]] || fail "printed nothing"
    ! grep '^Binary file' out || fail "took text for something else"
  done
}
cd -- "$folder"
for trace in "${traces[@]}"; do
  cp -- "$trace" trace.ct
  run_commands
  "$unfinished" "$trace" trace.ct
  run_commands
done
