#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# tools/compare-outputs.sh OLD NEW [COUNT] [SEED]: whether two builds of the tool write the same, to the
# byte, on COUNT (2000) random traces made from SEED (1), on the example traces, those beside the
# checkout if they are there, and the inputs of all golden cases. Memory addresses and the places of log
# lines may differ. The status is 1 if anything else does, and the traces are kept then.
set -euo pipefail
(($# >= 2 && $# <= 4)) || {
  echo "usage: $0 OLD NEW [COUNT] [SEED]" >&2
  exit 2
}
old=$(realpath -- "$1")
new=$(realpath -- "$2")
count=${3:-2000}
seed=${4:-1}
# shellcheck source=tools/setup.sh
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/setup.sh"

install_packages "${test_packages[@]}"
cd -- "$root"
cmake --preset dev >/dev/null || die "could not configure"
cmake --build --preset dev --target make_random_traces make_case_traces compare_outputs >&2 ||
  die "could not build"
programs=build/dev/tests/compare

work=$(mktemp -d "${TMPDIR:-/tmp}/codetrace-compare-XXXXXX")
trap 'rm -rf -- "$work"' EXIT
"$programs/make_random_traces" "$work/random" "$count" "$seed"
"$programs/make_case_traces" "$work/cases" tests/cli/*.case
traces=(examples "$work/cases")
((count == 0)) || traces+=("$work/random")
[[ ! -d ../shared/traces ]] || traces+=(../shared/traces)

status=0
"$programs/compare_outputs" "$old" "$new" "${traces[@]}" || status=$?
if ((status == 1)); then
  trap - EXIT
  echo "the traces are kept in $work"
fi
exit "$status"
