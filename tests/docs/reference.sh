#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# reference.sh FOLDER OUTPUT: whether Doxygen makes the reference of FOLDER in OUTPUT without a
# warning. Status 77 if there is no Doxygen.
set -euo pipefail
command -v doxygen >/dev/null || {
  echo "SKIPPED: doxygen is missing"
  exit 77
}
cd -- "$1"
mkdir -p -- "$2"
# The later setting counts.
{
  cat docs/Doxyfile
  printf 'OUTPUT_DIRECTORY = "%s"\n' "$2"
} | doxygen -
[[ -s $2/doxygen/index.html ]]
