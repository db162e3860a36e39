#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# rewrite_test.sh REWRITE CODETRACE TRACE...: each trace that is written again prints the same, and is the same
# byte for byte where it keeps its addresses.
set -euo pipefail
rewrite=$1 codetrace=$2
shift 2
folder=$(mktemp -d)
trap 'rm -rf -- "$folder"' EXIT
cd -- "$folder"

for trace in "$@"; do
  "$rewrite" "$trace" anew.ct
  for form in -J -T; do
    "$codetrace" "$form" "$trace" >expected 2>/dev/null
    "$codetrace" "$form" anew.ct >ours 2>/dev/null
    cmp expected ours
  done
  "$rewrite" "$trace" same.ct --as-before
  cmp "$trace" same.ct
  # The sections of the recording are gone.
  [[ $(echo *.ct*) == "anew.ct same.ct" ]]
done
