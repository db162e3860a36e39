#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# tools/tidy.sh [--share | FILE...]: runs clang-tidy over sources, by the checks in .clang-tidy; without
# FILE over all of src and examples, CMAKE_BUILD_PARALLEL_LEVEL at once. With --share over those that
# the last eight hours of the history changed, then of the others over a third, another one each day,
# as far as six minutes go. Fails if any has a finding.
set -euo pipefail
# shellcheck source=tools/setup.sh
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/setup.sh"

# Other versions know other checks.
tidy_version=14
install_packages "clang-tidy-$tidy_version" "${test_packages[@]}"
cd -- "$root"
cmake --preset dev >/dev/null || die "could not configure"

sources() { find src examples -name '*.cpp' | sort; }

# Of a checkout without that much history, all.
share() {
  local newest before turn file changed
  newest=$(git -c safe.directory="$root" log -1 --format=%ct)
  before=$(git -c safe.directory="$root" rev-list -1 --before=$((newest - 8 * 3600)) HEAD)
  [[ $before ]] || { sources; return; }
  changed=$'\n'$(git -c safe.directory="$root" diff --name-only "$before" HEAD)$'\n'
  turn=$((newest / 86400 % 3))
  sources | while read -r file; do
    [[ $changed != *$'\n'"$file"$'\n'* ]] || echo "$file"
  done
  sources | while read -r file; do
    [[ $changed == *$'\n'"$file"$'\n'* ]] || (($(cksum <<<"$file" | cut -d' ' -f1) % 3 != turn)) ||
      echo "$file"
  done
}

most_seconds=
case ${1-} in
  --share)
    most_seconds=360
    names=$(share)
    mapfile -t files <<<"$names"
    set -- "${files[@]}"
    ;;
  '')
    mapfile -t files < <(sources)
    set -- "${files[@]}"
    ;;
esac
(($#)) || die "no sources"

messages=$(mktemp -d)
trap 'rm -rf -- "$messages"' EXIT

# tidy MESSAGES [OPTION...] FILE
tidy() { "clang-tidy-$tidy_version" -p build/dev --quiet "${@:2}" >"$1" 2>&1; }

# check NUMBER FILE: fails, and says what was found, if anything was.
check() {
  local status=0 said=$messages/$1 file=$2
  say "$file"
  tidy "$said" "$file" || status=$?
  if ((status >= 128)); then
    say "its static analyzer crashes on $file; the other checks are made"
    status=0
    tidy "$said" '--checks=-clang-analyzer-*' "$file" || status=$?
  fi
  if ((status != 0)); then
    grep -v 'warnings\? generated' "$said" >&2 || true
    return 1
  fi
}

# As many at once as builds may be.
at_once=${CMAKE_BUILD_PARALLEL_LEVEL:-1} running=0 findings=0
finish_one() {
  wait -n || findings=$((findings + 1))
  running=$((running - 1))
}
number=0 begun=$SECONDS
for file in "$@"; do
  ((running < at_once)) || finish_one
  if [[ $most_seconds ]] && ((SECONDS - begun > most_seconds)); then
    say "the time is up: $(($# - number)) of $# files are left for another day"
    break
  fi
  number=$((number + 1)) running=$((running + 1))
  check "$number" "$file" &
done
while ((running)); do finish_one; done
((findings == 0)) || die "$findings of $# files with findings"
