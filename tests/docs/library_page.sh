#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# library_page.sh PROGRAM ROOT: whether the program of docs/library.md prints what the page says.
set -euo pipefail
page=$2/docs/library.md
blocks=$(dirname -- "${BASH_SOURCE[0]}")/blocks_of.awk
expected=$(awk -v language=text -f "$blocks" "$page")
[[ -n $expected ]]
diff <(printf '%s\n' "$expected") <("$1" "$2/examples/notes.ct")
