#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# links.sh FOLDER: whether the links in all of its pages lead somewhere.
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd -P)
# shellcheck source=tests/docs/files.sh
source "$here/files.sh"
cd -- "$1"
mapfile -d '' pages < <(project_files | grep -z '\.md$')
"$here/links.py" "${pages[@]}"
