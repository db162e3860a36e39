#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# fuzz/coverage.sh [--lines]: how much of the library the committed corpus reaches. With --lines it also
# shows the lines that are not reached.
set -euo pipefail
# shellcheck source=tools/setup.sh
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/../tools/setup.sh"
install_packages "${test_packages[@]}" clang libclang-rt-dev llvm
cd -- "$root"
folder=build/fuzz-coverage
targets=(file value json text cmdline api pattern sql queries exports writer check redact salvage)
programs=("${targets[@]/#/fuzz_}")
programs=("${programs[@]/%/_replay}")

flags="-fprofile-instr-generate -fcoverage-mapping"
cmake -S . -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_COMPILER=clang++ \
  -DCMAKE_CXX_FLAGS="$flags" -DCODETRACE_TESTS=ON >&2
cmake --build "$folder" -j2 --target "${programs[@]}" >&2

objects=()
rm -f -- "$folder"/*.profraw
for target in "${targets[@]}"; do
  program=$folder/fuzz/fuzz_${target}_replay
  LLVM_PROFILE_FILE=$folder/$target.profraw "$program" "fuzz/corpus/$target" >&2
  objects+=(-object "$program")
done
llvm-profdata merge -sparse "$folder"/*.profraw -o "$folder/corpus.profdata"
# The first of the objects has no option in front of it.
show=("${objects[@]:1}" -instr-profile="$folder/corpus.profdata" -compilation-dir="$root"
  "$root/src/libs/codetrace")
llvm-cov report "${show[@]}"
if [[ ${1-} == --lines ]]; then
  llvm-cov show "${show[@]}" | grep -E '^/|^ *[0-9]+\| +0\|'
fi
