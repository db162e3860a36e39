#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# fuzz/run.sh TARGET SECONDS [MORE LIBFUZZER ARGUMENTS]: builds one target with libFuzzer and runs it,
# starting from the corpus. See fuzz/README.md.
set -euo pipefail
# shellcheck source=tools/setup.sh
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/../tools/setup.sh"
(($# >= 2)) && [[ -f $root/fuzz/$1_fuzzer.cpp && $2 =~ ^[0-9]+$ ]] ||
  die "usage: fuzz/run.sh TARGET SECONDS [MORE LIBFUZZER ARGUMENTS]; targets:" \
    "$(cd -- "$root/fuzz" && echo *_fuzzer.cpp | sed 's/_fuzzer\.cpp//g')"
target=$1 seconds=$2

install_packages "${test_packages[@]}" clang libclang-rt-dev
cd -- "$root"
if [[ ! -e build/fuzz/build.ninja ]]; then cmake --preset fuzz >&2; fi
cmake --build build/fuzz -j2 --target "fuzz_$target" >&2

work=build/fuzz-corpus/$target findings=build/fuzz-findings/$target
dictionary=fuzz/trace.dict largest=4096
case $target in
  file) largest=65536 ;;
  pattern) largest=256 ;;
  cmdline) dictionary=fuzz/cmdline.dict ;;
  sql) dictionary=fuzz/sql.dict ;;
esac
mkdir -p -- "$work" "$findings" "fuzz/corpus/$target"
export UBSAN_OPTIONS=print_stacktrace=1
# New inputs go to the first folder; the others are only read.
exec "build/fuzz/fuzz/fuzz_$target" -dict="$dictionary" -max_len="$largest" -timeout=10 \
  -rss_limit_mb=2048 -max_total_time="$seconds" -artifact_prefix="$findings/" "${@:3}" \
  "$work" "fuzz/corpus/$target"
