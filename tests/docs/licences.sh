#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# licences.sh FOLDER: whether every file whose format has comments names its licence at its top.
set -euo pipefail
# shellcheck source=tests/docs/files.sh
source "$(dirname -- "${BASH_SOURCE[0]}")/files.sh"
cd -- "$1"
missing=0
seen=0

while IFS= read -r -d '' path; do
  case $path in
    *CMakeLists.txt) ;;
    # Formats without comments, and data.
    LICENSE | *.json | *.case | *.expected | *.ct | *.txt | *.abi | *.png) continue ;;
    packaging/debian/changelog | packaging/debian/copyright) continue ;;
    fuzz/corpus/* | tests/data/*) continue ;;
  esac
  seen=$((seen + 1))
  if ! grep -aq 'SPDX-License-Identifier: MIT' <(head -n 5 -- "$path"); then
    echo "$path: no line \"SPDX-License-Identifier: MIT\" among its first five"
    missing=$((missing + 1))
  fi
done < <(project_files)

((seen > 0)) || echo "no files in $1"
((seen > 0 && missing == 0))
