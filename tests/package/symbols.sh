#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# symbols.sh LIBRARY [--write]: compares what the shared library exports with the list beside this
# script; --write makes the list anew. A name that goes breaks programs that use it; one that comes
# has to be kept for as long as the library is called libcodetrace.so.3.
set -euo pipefail
list=$(dirname -- "${BASH_SOURCE[0]}")/symbols.txt
export LC_ALL=C

# One name a line. Constructors and destructors are there two or three times in the library.
exported=$(nm -DC --defined-only -- "$1" | cut -d ' ' -f 3- | sed 's/@@CODETRACE_3$//' |
  grep -vx CODETRACE_3 | sort -u)
if [[ ${2-} == --write ]]; then
  printf '%s\n' "$exported" >"$list"
  exit
fi
others=$(grep -vE '^((typeinfo|typeinfo name|vtable) for )?CT::' <<<"$exported") || true
if [[ -n $others ]]; then
  printf 'exported, and none of our public names:\n%s\n' "$others"
  exit 1
fi
diff -u --label "symbols.txt" --label "$1" -- "$list" - <<<"$exported" ||
  { echo "if that is meant: tests/package/symbols.sh $1 --write"; exit 1; }
echo "$(wc -l <"$list") names are exported"
