#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# tools/coverage.sh [--lines]: how much of src the tests reach, without the branches that only exceptions
# take. With --lines it also names the lines that are not reached.
set -euo pipefail
# shellcheck source=tools/setup.sh
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/setup.sh"
install_packages "${test_packages[@]}" gcovr
cd -- "$root"
folder=build/coverage
cmake -S . -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCODETRACE_TESTS=ON \
  -DCMAKE_CXX_FLAGS=--coverage >&2
cmake --build "$folder" >&2
find "$folder" -name '*.gcda' -delete
# Left out: what runs no code of src, the hardening, the deepest values, which take minutes without
# optimisation, and two tests where the tool cannot write its counters: as another user, and under a
# limit of file sizes.
ctest --test-dir "$folder" -E '^(Docs|Package|Hardening)|Deep|FilesOfOthers|FileSizeLimit' \
  >"$folder/tests.log" 2>&1 || { tail -n 40 "$folder/tests.log"; die "not all tests passed"; }
gcovr=(gcovr --root "$root" --filter src/ --exclude-throw-branches --exclude-unreachable-branches
  "$folder")
"${gcovr[@]}" --print-summary --txt "$folder/report.txt"
sed -n '4,$p' "$folder/report.txt"
[[ ${1-} != --lines ]] || "${gcovr[@]}" --txt --branches
