#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# without_qt_test.sh PROGRAM CODETRACE: what a program writes that was built without Qt, `codetrace` reads.
set -euo pipefail
program=$1 codetrace=$2
folder=$(mktemp -d)
trap 'rm -rf -- "$folder"' EXIT

ldd "$program" >"$folder/libraries"
if grep -i qt "$folder/libraries"; then
  echo "$program needs Qt"
  exit 1
fi
"$program" "$folder/hi.ct"
"$codetrace" -T "$folder/hi.ct" >"$folder/text"
diff - "$folder/text" <<'TEXT'
REQUEST STARTUP: REQUEST: /hi, URL: /hi
  greet("hi**CUT**", array(0 => 7), object(A#1)) Returned: true
TEXT
