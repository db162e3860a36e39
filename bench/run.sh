#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds both tools and measures them on traces as PHP programs leave them: bench/run.sh [--quick] [TRACE...]
# --quick leaves out the largest one. Without TRACE, those of ../shared/traces count where they are there.
# Status 1 if an answer of the companion costs more than it may.
set -euo pipefail
cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.."

options=()
if [[ ${1-} == --quick ]]; then
  options=(--quick)
  shift
fi
traces=("$@")
if ((!${#traces[@]})); then
  shopt -s nullglob
  traces=(../shared/traces/*.ct)
fi
cmake --preset release -DCODETRACE_BENCH=ON >/dev/null
cmake --build --preset release -j"${JOBS:-1}" >&2
build/release/bench/speed build/release/src/codetrace "${options[@]}" "${traces[@]}"
build/release/bench/questions build/release/src/codetrace build/release/src/cttool "${options[@]}"
