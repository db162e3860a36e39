#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the tool and measures it on the worst cases: bench/worst.sh [--quick] [CASE...]
set -euo pipefail
cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.."

cmake --preset release -DCODETRACE_BENCH=ON >/dev/null
cmake --build --preset release -j"${JOBS:-1}" >&2
exec build/release/bench/worst_cases run build/release/src/codetrace "$@"
