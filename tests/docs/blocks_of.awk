# SPDX-License-Identifier: MIT
# awk -v language=NAME -f blocks_of.awk FILE.md: the code blocks of one language, one after the other.
$0 == "```" language { inside = 1; next }
/^```/ { inside = 0 }
inside
