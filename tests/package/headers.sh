#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# headers.sh COMPILER PREFIX: whether each installed header compiles on its own, as a user includes
# it and with the warnings of strict users.
set -euo pipefail
compiler=$1 prefix=$2

mapfile -t headers < <(cd -- "$prefix/include" && find codetrace kcommon -name '*.h' | sort)
((${#headers[@]} > 20)) || { echo "only ${#headers[@]} headers were installed"; exit 1; }
read -ra flags < <(pkg-config --cflags Qt6Core)

failures=0
for header in "${headers[@]}"; do
  "$compiler" -std=c++20 -Wall -Wextra -Wpedantic -Werror -fsyntax-only \
    -I"$prefix/include" "${flags[@]}" -x c++ - <<<"#include <$header>" || { echo "$header does not stand alone"; ((++failures)); }
done
((failures == 0)) && echo "${#headers[@]} headers stand alone"
