#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# subproject.sh COMPILER SOURCE: whether a project that takes this one in by add_subdirectory gets
# the library by its name, and neither the tool nor anything to install.
set -euo pipefail
compiler=$1 source=$2
work=$(mktemp -d)
trap 'rm -rf -- "$work"' EXIT

cat >"$work/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.24)
project(outer LANGUAGES CXX)
add_subdirectory($source codetrace)
add_subdirectory($source/examples/api examples)
END
cmake -S "$work" -B "$work/build" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" >"$work/log" ||
  { cat -- "$work/log"; exit 1; }
steps=$(ninja -C "$work/build" -n)
[[ $steps == *slowest_calls* ]] || { echo "the examples are not built"; exit 1; }
[[ $steps != *ct_main* ]] || { echo "the tool is built"; exit 1; }
DESTDIR=$work/installed cmake --install "$work/build" >"$work/log" || true
[[ ! -e $work/installed ]] || { find "$work/installed"; echo "is installed"; exit 1; }
