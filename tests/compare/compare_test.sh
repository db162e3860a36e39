#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# compare_test.sh PROGRAMS TOOL: whether a comparison of the tool with itself finds nothing, and finds
# one byte more or less in any output, a changed status, and an address that leads elsewhere. PROGRAMS is
# the folder of what tools/compare-outputs.sh runs.
set -euo pipefail
programs=$1
export TOOL=$2
folder=$(mktemp -d "${TMPDIR:-/tmp}/codetrace-compare-test-XXXXXX")
trap 'rm -rf -- "$folder"' EXIT
cd -- "$folder"

"$programs/make_random_traces" traces 6 1
"$programs/make_random_traces" again 6 1
diff -r traces again || {
  echo "one seed gave two sets of traces"
  exit 1
}
"$programs/compare_outputs" "$TOOL" "$TOOL" traces || {
  echo "the tool differs from itself"
  exit 1
}

# expect_found NAME COMMAND: a tool that runs COMMAND, where $TOOL is the true one, is found out.
expect_found() {
  printf '#!/usr/bin/env bash\n%s\n' "$2" >altered
  chmod +x altered
  local status=0
  "$programs/compare_outputs" "$TOOL" ./altered traces >report || status=$?
  if ((status != 1)) || ! grep -q '^different: codetrace ' report; then
    echo "not found, status $status: $1"
    exit 1
  fi
}

# shellcheck disable=SC2016 # $TOOL and $1 are the altered tool's
{
  expect_found "a byte more of text" '"$TOOL" "$@"; [[ $1 != -T ]] || echo'
  expect_found "a byte of JSON" '"$TOOL" "$@" | sed "s/STARTUP/STARTUQ/"'
  expect_found "a byte more of log" '"$TOOL" "$@"; [[ $1 != -vvvv ]] || echo >&2'
  expect_found "another status" '"$TOOL" "$@"; [[ $1 != -B ]] || exit 3'
  expect_found "another start's address" '"$TOOL" "$@" | sed "/START: 0x/s/[0-9a-f]\$/1/"'
}
