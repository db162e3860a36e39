#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# hardening.sh BINARY: whether the binary was built with what cmake/Hardening.cmake asks for.
set -euo pipefail
binary=$1
export LC_ALL=C
failures=0

# expect WHAT PATTERN TEXT
expect() {
  if ! grep -Eq -- "$2" <<<"$3"; then
    echo "$binary: $1 is missing"
    failures=$((failures + 1))
  fi
}

headers=$(readelf -hlW "$binary")
dynamic=$(readelf -dW "$binary")
symbols=$(readelf --dyn-syms -W "$binary")

expect "position-independent code" 'Type: +DYN' "$headers"
expect "the PIE flag" 'FLAGS_1.*PIE' "$dynamic"
expect "RELRO" 'GNU_RELRO' "$headers"
expect "immediate binding" 'FLAGS.*(BIND_NOW|NOW)' "$dynamic"
expect "a stack that is not executable" 'GNU_STACK .* RW ' "$headers"
expect "the stack protector" '__stack_chk_fail' "$symbols"
expect "_FORTIFY_SOURCE" '__[a-z]+_chk@' "$symbols"
((failures == 0)) && echo "$binary is hardened"
