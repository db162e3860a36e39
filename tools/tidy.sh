#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# tools/tidy.sh [FILE...]: runs clang-tidy over sources, by the checks in .clang-tidy; without FILE
# over all of src and examples, one after the other. Fails if any has a finding.
set -euo pipefail
# shellcheck source=tools/setup.sh
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/setup.sh"

# Other versions know other checks.
tidy_version=14
install_packages "clang-tidy-$tidy_version" "${test_packages[@]}"
cd -- "$root"
cmake --preset dev >/dev/null || die "could not configure"
if (($# == 0)); then
  mapfile -t files < <(find src examples -name '*.cpp' | sort)
  set -- "${files[@]}"
fi
(($#)) || die "no sources"

messages=$(mktemp)
trap 'rm -f "$messages"' EXIT
# tidy [OPTION...] FILE: what it says goes to $messages.
tidy() { "clang-tidy-$tidy_version" -p build/dev --quiet "$@" >"$messages" 2>&1; }

findings=0
for file in "$@"; do
  say "$file"
  status=0
  tidy "$file" || status=$?
  if ((status >= 128)); then
    say "its static analyzer crashes on $file; the other checks are made"
    status=0
    tidy '--checks=-clang-analyzer-*' "$file" || status=$?
  fi
  if ((status != 0)); then
    grep -v 'warnings\? generated' "$messages" >&2 || true
    findings=$((findings + 1))
  fi
done
((findings == 0)) || die "$findings of $# files with findings"
