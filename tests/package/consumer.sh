#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# consumer.sh cmake|pkg-config COMPILER PREFIX TRACE: builds the consumer with the installed library,
# shared and static, and compares what it prints with what the installed tool prints.
set -euo pipefail
way=$1 compiler=$2 prefix=$3 trace=$4
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf -- "$work"' EXIT
library=$(dirname -- "$(find "$prefix" -name libcodetrace.so)")
export LD_LIBRARY_PATH=$library${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}

build_with_cmake() {
  cmake -S "$here/consumer" -B "$work" -G Ninja \
    -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$compiler" >"$work/log"
  cmake --build "$work" >>"$work/log"
}

build_with_pkg_config() {
  export PKG_CONFIG_PATH=$library/pkgconfig${PKG_CONFIG_PATH:+:$PKG_CONFIG_PATH}
  local compile link dependencies
  read -ra compile < <(pkg-config --cflags 'codetrace >= 3')
  read -ra link < <(pkg-config --libs codetrace)
  read -ra dependencies < <(pkg-config --libs Qt6Core)
  "$compiler" -std=c++20 -O1 "${compile[@]}" -c "$here/consumer/main.cpp" -o "$work/main.o"
  "$compiler" "$work/main.o" "${link[@]}" -o "$work/with_codetrace"
  "$compiler" "$work/main.o" "$library/libcodetrace.a" "${dependencies[@]}" \
    -o "$work/with_codetrace_static"
}

# loads PROGRAM: whether it loads the shared library, from the prefix.
loads() {
  local loaded
  loaded=$(ldd "$work/$1") || die "ldd cannot read $1"
  [[ $loaded == *"libcodetrace.so.3 => $library/"* ]]
}

die() {
  cat -- "$work/log" 2>/dev/null || true
  echo "$way: $*"
  exit 1
}

case $way in
  cmake) build_with_cmake || die "the consumer was not built" ;;
  pkg-config) build_with_pkg_config || die "the consumer was not built" ;;
  *) die "no way to build" ;;
esac
loads with_codetrace || die "the shared library is not used"
! loads with_codetrace_static || die "the static library is not used"

tool=$prefix/bin/codetrace
{
  "$tool" -J "$trace" | jq -j '[.cp[] | select(has("function"))]
    | "\(length) calls, \([.[].args // [] | length] | add) arguments"'
  "$tool" -J "$trace" | jq -r '", \(.cp | length) nodes"'
  "$tool" "$trace"
} >"$work/expected"
[[ $(head -n 1 "$work/expected") =~ ^[1-9] ]] || die "the tool shows no calls"
for program in with_codetrace with_codetrace_static; do
  "$work/$program" "$trace" >"$work/printed" || die "$program failed"
  cmp "$work/expected" "$work/printed" || die "$program prints something else than the tool"
done
