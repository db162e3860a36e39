#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# install.sh BUILD PREFIX SOURCE: installs the build folder, moves what was installed to PREFIX, and
# checks that no file there knows where it was built or first installed.
set -euo pipefail
build=$1 prefix=$2 source=$3
first=$prefix.first

rm -rf -- "$first" "$prefix"
cmake --install "$build" --prefix "$first" >/dev/null
mv -- "$first" "$prefix"

found=$(find "$prefix" -type f | wc -l)
((found > 30)) || { echo "only $found files were installed"; exit 1; }
[[ $(readlink "$prefix"/lib*/libcodetrace.so.3) == libcodetrace.so.3.0.0 ]] ||
  { echo "libcodetrace.so.3 is no link to libcodetrace.so.3.0.0"; exit 1; }
if grep -rlF -e "$source" -e "$build" -e "$first" -- "$prefix"; then
  echo "these files name folders of the build machine"
  exit 1
fi
