#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# spelling.sh FOLDER: whether codespell knows of no mistake in the tree's text. What it takes for one
# and is none stands in .codespellrc.
set -euo pipefail
# shellcheck source=tests/docs/files.sh
source "$(dirname -- "${BASH_SOURCE[0]}")/files.sh"
cd -- "$1"
mapfile -d '' files < <(project_files)
((${#files[@]})) || {
  echo "no files in $1"
  exit 1
}
# Quiet about the binary files among them.
codespell --quiet-level=2 -- "${files[@]}"
