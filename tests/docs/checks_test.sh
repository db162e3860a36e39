#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# checks_test.sh ROOT: whether the checks in this folder find what is wrong.
set -euo pipefail
checks=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd -P)
tree=$(mktemp -d)
trap 'rm -rf -- "$tree"' EXIT
failures=0

# expect_complaint PATTERN CHECK ARGUMENT...: the check fails and says something like this.
expect_complaint() {
  local pattern=$1 output
  shift
  if output=$("$checks/$1" "${@:2}" 2>&1) || ! grep -q -- "$pattern" <<<"$output"; then
    printf '%s does not complain of %s but says: %s\n' "$1" "$pattern" "$output"
    failures=$((failures + 1))
  fi
}

# expect_silence CHECK ARGUMENT...: the check passes.
expect_silence() {
  local output
  output=$("$checks/$1" "${@:2}" 2>&1) || {
    printf '%s complains: %s\n' "$1" "$output"
    failures=$((failures + 1))
  }
}

cat >"$tree/good.md" <<'END'
<!-- SPDX-License-Identifier: MIT -->
# A `good` page, twice
# A `good` page, twice
[itself](#a-good-page-twice-1), [the folder](.), `[code](nowhere)`, [web](https://example.org/)

    [code](nowhere)
END
cat >"$tree/good.sh" <<'END'
# SPDX-License-Identifier: MIT
head -n 1 page || grep -q quiet page
# cat page | head
awk '{ print $1 }' page | grep -v head
END
for check in licences links pipes spelling; do expect_silence "$check.sh" "$tree"; done

echo '[a file](nowhere.md)' >"$tree/file.md"
echo '[a heading](good.md#a-good-page-thrice)' >"$tree/heading.md"
expect_complaint 'file.md:1: nowhere.md does not exist' links.sh "$tree"
expect_complaint 'heading.md:1: good.md#a-good-page-thrice has no such heading' links.sh "$tree"
expect_complaint 'file.md: no line' licences.sh "$tree"
# In two pieces, for the check that reads this file.
printf 'Do not %s this.\n' 'rec''ieve' >"$tree/spelling.md"
expect_complaint 'spelling.md:1' spelling.sh "$tree"
for reader in 'grep -q x' 'grep -v -Fq x' 'grep --quiet x' 'grep -m 1 x' head 'head -n 1' \
  "awk '{ print; exit }'"; do
  printf 'cat page |\n  %s\n' "$reader" >"$tree/early.sh"
  expect_complaint 'early.sh:2: cat page' pipes.sh "$tree"
done
rm -- "$tree/early.sh"

mkdir -p -- "$tree"/{docs,bench,tests/cli,tests/unit}
printf '%s\n' 'TEST_F(Suite,' '       Name) {' >"$tree/tests/unit/a_test.cpp"
: >"$tree/tests/cli/a_case.case"
echo '// "a_bench"' >"$tree/bench/a.cpp"
table='| `not.looked.at` | `Suite.Name`, `Golden.a_case`, bench `a_bench` |'
echo "$table" >"$tree/docs/robustness.md"
expect_silence named_tests.py "$tree"
for name in Suite.Other Golden.other other_bench; do
  printf '%s\n' "$table" "| | \`$name\` |" >"$tree/docs/robustness.md"
  expect_complaint "docs/robustness.md:2: $name does not exist" named_tests.py "$tree"
done

if command -v doxygen >/dev/null; then
  mkdir -p -- "$tree/docs" "$tree/src/libs"
  cp -- "$1"/docs/{Doxyfile,doxygen_filter.awk} "$tree/docs"
  printf '# A page\n\n\\ref nothing_of_that_name\n' >"$tree/docs/library.md"
  expect_complaint nothing_of_that_name reference.sh "$tree" "$tree/build"
else
  echo "SKIPPED: the check of the reference, for doxygen is missing"
fi
((failures == 0))
