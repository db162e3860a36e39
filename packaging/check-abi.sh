#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# check-abi.sh [--write] [LIBRARY]: compares what programs rely on in the shared library with what
# packaging/abi/libcodetrace.abi holds; --write makes that file anew. LIBRARY has to have debugging
# information, as that of the dev preset has; without it one is built in build/abi.
set -euo pipefail
# shellcheck source=tools/setup.sh
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/../tools/setup.sh"

write=
if [[ ${1-} == --write ]]; then
  write=yes
  shift
fi
library=${1:+$(readlink -f -- "$1")}
kept=$root/packaging/abi/libcodetrace.abi
work=$(mktemp -d)
trap 'rm -rf -- "$work"' EXIT

build_library() {
  cmake -S "$root" -B "$root/build/abi" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
  cmake --build "$root/build/abi" --target codetrace_shared
}

# Nothing that differs from machine to machine, and no types but those of our headers.
describe() {
  abidw --headers-dir "$root/src/libs" --drop-private-types --exported-interfaces-only \
    --suppressions "$root/packaging/abi/others.ini" --no-corpus-path --no-comp-dir-path \
    --no-show-locs --no-parameter-names --out-file "$2" "$1"
}

install_packages abigail-tools
if [[ -z $library ]]; then
  install_packages "${build_packages[@]}"
  build_library >&2 || die "could not build the library"
  library=$root/build/abi/src/libcodetrace.so.3
fi
describe "$library" "$work/now.abi" || die "$library cannot be described"
grep -q '<class-decl .*File' "$work/now.abi" || die "$library has no debugging information"

if [[ $write ]]; then
  mv -- "$work/now.abi" "$kept"
  exit
fi
status=0
abidiff "$kept" "$work/now.abi" || status=$?
((status & 3)) && die "the comparison failed"
if ((status == 0)); then
  echo "the ABI is that of $kept"
  exit
fi
again="packaging/check-abi.sh --write"
if abidiff --no-added-syms "$kept" "$work/now.abi" >/dev/null; then
  say "The library offers more than before, and all that it offered: programs go on working." \
    "Is that meant? Then keep it: $again"
else
  say "Programs that were built with libcodetrace.so.3 may break with this library, when it was" \
    "released. Undo the change; or make the library another one: raise the major version in" \
    "CMakeLists.txt and in src/libs/codetrace/codetrace.map, rename the files in packaging/debian." \
    "Then, or as long as nothing was released: $again"
fi
exit 1
