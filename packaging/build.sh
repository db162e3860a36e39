#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Makes the Debian packages and the RPM packages into build/packages. The same sources give the same
# bytes wherever they lie: times in the packages are that of the last commit, or SOURCE_DATE_EPOCH.
set -euo pipefail
# shellcheck source=tools/setup.sh
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/../tools/setup.sh"
cd -- "$root"
umask 022

packages=$root/build/packages
work=$packages/work

last_change() {
  git -c safe.directory="$root" log -1 --format=%ct 2>/dev/null ||
    die "SOURCE_DATE_EPOCH is not set, and there is no commit to take the time from"
}
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(last_change)}
export SOURCE_DATE_EPOCH

# make_packages KIND FILES [CMAKE OPTIONS]
make_packages() {
  cmake -S "$root" -B "$work" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
    -DCODETRACE_PACKAGES="$1" "${@:3}" || die "could not configure $work"
  cmake --build "$work" || die "could not build $work"
  (cd -- "$work" && rm -rf _CPack_Packages && cpack -G "$1") || die "could not make $1 packages"
  # shellcheck disable=SC2086 # a pattern
  mv -- "$work"/$2 "$packages"
}

install_packages "${build_packages[@]}" dpkg-dev file rpm
mkdir -p -- "$packages"
rm -f -- "$packages"/*.deb "$packages"/*.rpm
{
  make_packages DEB '*.deb' -UCMAKE_INSTALL_LIBDIR
  make_packages RPM '*.rpm' -DCMAKE_INSTALL_LIBDIR=lib64
} >&2
ls -- "$packages"/*.deb "$packages"/*.rpm
