#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# skipped_test.sh ROOT: whether tools/skipped_tests.py lists what was skipped, and nothing else.
set -euo pipefail
report=$(mktemp)
trap 'rm -f -- "$report"' EXIT

cat >"$report" <<'END'
<?xml version="1.0" encoding="UTF-8"?>
<testsuite>
  <testcase name="Good" status="run"><system-out>OK
</system-out></testcase>
  <testcase name="Partly" status="run"><system-out>SKIPPED: one of two, for lack of glue
all is well
</system-out></testcase>
  <testcase name="Script" status="notrun"><skipped message="SKIP_RETURN_CODE=77"/>
    <system-out>SKIPPED: no paint
</system-out></testcase>
  <testcase name="Google" status="notrun"><skipped message="SKIP_REGULAR_EXPRESSION_MATCHED"/>
    <system-out>[ RUN      ] Google
/a_test.cpp:58: Skipped
no brush
no easel

[  SKIPPED ] Google (0 ms)
</system-out></testcase>
  <testcase name="Silent" status="notrun"><skipped message="SKIP_RETURN_CODE=77"/><system-out/></testcase>
  <testcase name="Off" status="disabled"><skipped message="Disabled"/><system-out/></testcase>
</testsuite>
END
expected='
Skipped, whole or in part:
  Partly: one of two, for lack of glue
  Script: no paint
  Google: no brush no easel
  Silent: SKIP_RETURN_CODE=77'
diff <(echo "$expected") <("$1/tools/skipped_tests.py" "$report")

echo '<testsuite/>' >"$report"
[[ ! $("$1/tools/skipped_tests.py" "$report") ]]
