#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the tool and measures it on the worst cases, then what salvaging them costs, and others that were
# made for that: bench/worst.sh [--quick] [CASE...]
set -euo pipefail
cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.."

cmake --preset release -DCODETRACE_BENCH=ON >/dev/null
cmake --build --preset release -j"${JOBS:-1}" >&2
status=0
build/release/bench/worst_cases run build/release/src/codetrace "$@" || status=1
build/release/bench/salvage_worst build/release/src/cttool "$@" || status=1
exit "$status"
