#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# man_lint.sh PAGE...: whether mandoc finds nothing at all to say about the pages.
set -euo pipefail
status=0
messages=$(mandoc -Tlint "$@" 2>&1) || status=$?
printf '%s\n' "$messages"
((status == 0)) && [[ -z $messages ]]
