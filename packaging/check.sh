#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# check.sh: checks the packages that build.sh made of these sources: lintian finds no error and no
# warning, what an RPM package unpacks to runs, and the same sources at another path give the same
# bytes.
set -euo pipefail
# shellcheck source=tools/setup.sh
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/../tools/setup.sh"
cd -- "$root"
packages=$root/build/packages
work=$(mktemp -d)
trap 'rm -rf -- "$work"' EXIT
git=(git -c "safe.directory=$root")

install_packages lintian rpm rpm2cpio cpio

as_anyone=()
((EUID != 0)) || as_anyone=(--allow-root)
lintian "${as_anyone[@]}" --fail-on error,warning -- "$packages"/*.deb ||
  die "lintian is not content"

for package in "$packages"/*.rpm; do
  rpm -qp --list -- "$package" >"$work/listed"
  (cd -- "$work" && rpm2cpio "$package" | cpio -idm --quiet)
  while read -r file; do
    [[ -e $work/$file || -L $work/$file ]] || die "$file is not in $package"
  done <"$work/listed"
done
build/packages/work/src/codetrace examples/notes.ct >"$work/expected"
"$work/usr/bin/codetrace" examples/notes.ct | cmp - "$work/expected" ||
  die "the tool of the RPM package does not run"
for file in README.md docs/cookbook.md examples/notes.ct; do
  cmp -- "$file" "$work/usr/share/doc/codetrace/$file" || die "the RPM package lacks $file"
done
[[ -e $work/usr/lib64/libcodetrace.so ]] || die "the RPM packages lack the library"

copy=$work/another/path
mkdir -p -- "$copy"
"${git[@]}" ls-files -z | xargs -0 cp -P --parents -t "$copy" --
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$("${git[@]}" log -1 --format=%ct)}
export SOURCE_DATE_EPOCH
"$copy/packaging/build.sh" >"$work/log" 2>&1 || {
  tail -n 40 -- "$work/log"
  die "the copy was not built"
}
for package in "$packages"/*.deb "$packages"/*.rpm; do
  cmp -- "$package" "$copy/build/packages/${package##*/}" || die "$package depends on the path"
done
say "the packages are in order"
