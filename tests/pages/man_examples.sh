#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# man_examples.sh BINARY PAGE TRACE: runs the command lines of codetrace(1) on a trace. Each must do
# its work and have something to show for it.
set -euo pipefail
# shellcheck source=tests/pages/page_text.sh
source "$(dirname -- "$0")/page_text.sh"
folder=$(mktemp -d)
trap 'rm -rf -- "$folder"' EXIT
mkdir "$folder/bin"
ln -s -- "$(realpath -- "$1")" "$folder/bin/codetrace"
cp -- "$3" "$folder/trace.ct"
gzip -k "$folder/trace.ct"
export PATH=$folder/bin:$PATH

# A command begins behind "$ " and goes on in lines that are further in.
mapfile -d '' commands < <(page_section "$2" EXAMPLES | awk '
  /^           \$ / { printf "%s%s", separator, substr($0, 14); separator = "\0"; inside = 1; next }
  /^            / && inside { print ""; printf "%s", $0; next }
  { inside = 0 }')
((${#commands[@]})) || { echo "no command found"; exit 1; }

cd -- "$folder"
for command in "${commands[@]}"; do
  rm -f report.txt
  bash -o pipefail -c "$command" >out 2>err || { echo "failed: $command"; cat err; exit 1; }
  [[ ! -s err ]] || { echo "complained: $command"; cat err; exit 1; }
  [[ -s out || -s report.txt ]] || { echo "printed nothing: $command"; exit 1; }
done
