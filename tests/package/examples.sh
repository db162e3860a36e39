#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# examples.sh COMPILER PREFIX SOURCE: builds the programs of examples/api as a user does, with the
# installed library, and runs one.
set -euo pipefail
compiler=$1 prefix=$2 source=$3
work=$(mktemp -d)
trap 'rm -rf -- "$work"' EXIT

{
  cmake -S "$source/examples/api" -B "$work" -G Ninja \
    -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$compiler"
  cmake --build "$work"
} >"$work/log" || { cat -- "$work/log"; exit 1; }
library=$(dirname -- "$(find "$prefix" -name libcodetrace.so)")
export LD_LIBRARY_PATH=$library${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}
"$work/slowest_calls" "$source/examples/notes.ct" >"$work/printed"
[[ $(grep -c ' ms  ' "$work/printed") == 10 ]] || { echo "not ten calls"; exit 1; }
