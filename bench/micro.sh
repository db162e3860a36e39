#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds and runs the micro-benchmarks: bench/micro.sh [OPTIONS OF GOOGLE BENCHMARK]
set -euo pipefail
# shellcheck source=tools/setup.sh
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/../tools/setup.sh"
install_packages "${build_packages[@]}" libbenchmark-dev
cd -- "$root"
cmake --preset release -DCODETRACE_BENCH=ON >/dev/null
cmake --build --preset release -j"${JOBS:-1}" >&2
exec build/release/bench/micro "$@"
