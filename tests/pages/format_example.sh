#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# format_example.sh BINARY PAGE: whether the file that codetrace(5) shows is printed as it says.
set -euo pipefail
# shellcheck source=tests/pages/page_text.sh
source "$(dirname -- "$0")/page_text.sh"
folder=$(mktemp -d)
trap 'rm -rf -- "$folder"' EXIT

example=$(page_section "$2" EXAMPLES)
bytes=$(grep -E '^ +([0-9a-f]{2} ){3,}[0-9a-f]{2}$' <<<"$example")
# shellcheck disable=SC2086,SC2059
printf "$(printf '\\x%s' $bytes)" >"$folder/example.ct"
expected=$(sed -n '/prints it:/,$s/^           //p' <<<"$example")
[[ -n $expected ]] || { echo "codetrace(5) does not show what is printed"; exit 1; }
diff <(echo "$expected") <("$1" "$folder/example.ct")
