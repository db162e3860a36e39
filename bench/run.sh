#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the tool and measures it on traces as PHP programs leave them: bench/run.sh [--quick] [TRACE...]
# --quick leaves out the largest one. Without TRACE, those of ../shared/traces count where they are there.
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
exec build/release/bench/speed build/release/src/codetrace "${options[@]}" "${traces[@]}"
