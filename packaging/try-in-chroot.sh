#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# try-in-chroot.sh [CACHE]: installs the Debian packages of build/packages, which build.sh makes, in
# a clean Debian 12, and tries there what a user would; see chroot-steps.sh. CACHE (build/chroot)
# keeps what was downloaded for the next time. Takes root, and the mirror and proxy of this system's
# apt.
set -euo pipefail
# shellcheck source=tools/setup.sh
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/../tools/setup.sh"
release=bookworm
cache=$(readlink -m -- "${1:-$root/build/chroot}")
archives=$cache/archives
chroot=$cache/$release

((EUID == 0)) || die "only root can make a chroot"
install_packages debootstrap util-linux
mkdir -p -- "$archives"

mirror=$(apt-get indextargets --format "\$(REPO_URI) \$(CODENAME) \$(COMPONENT) \$(CREATED_BY)" |
  awk -v release=$release '$2 == release && $3 == "main" && $4 == "Packages" && !found++ { print $1 }')
[[ $mirror ]] || die "this system's apt knows no mirror of Debian $release"

if [[ ! -e $cache/$release.tar ]]; then
  rm -rf -- "$chroot"
  debootstrap --variant=minbase --cache-dir="$archives" $release "$chroot" "$mirror" >&2 ||
    die "debootstrap failed"
  tar -C "$chroot" -cf "$cache/$release.tar.new" .
  mv -- "$cache/$release.tar.new" "$cache/$release.tar"
fi

rm -rf -- "$chroot"
mkdir -p -- "$chroot"
trap 'rm -rf -- "$chroot"' EXIT
tar -C "$chroot" -xf "$cache/$release.tar"
echo "deb $mirror $release main" >"$chroot/etc/apt/sources.list"
apt-config dump | grep -i '^Acquire::http.*::Proxy ' >"$chroot/etc/apt/apt.conf.d/90proxy" || true
cp -- /etc/resolv.conf "$chroot/etc/resolv.conf"
find "$archives" -maxdepth 1 -name '*.deb' -exec cp -t "$chroot/var/cache/apt/archives" {} +

mkdir -- "$chroot/try"
cp -- "$root"/build/packages/*.deb "$chroot/try" || die "packaging/build.sh makes the packages first"
cp -r -- "$root/packaging/chroot-steps.sh" "$root/tests/package" "$root/examples/notes.ct" \
  "$chroot/try"

status=0
# The mounts are this process's own and end with it.
# shellcheck disable=SC2016 # for the inner shell
unshare --mount bash -c '
  mount -t proc proc "$1/proc" && mount --rbind /dev "$1/dev" &&
    exec env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root TERM=dumb \
      chroot "$1" /try/chroot-steps.sh' bash "$chroot" </dev/null || status=$?
find "$chroot/var/cache/apt/archives" -maxdepth 1 -name '*.deb' -exec cp -nt "$archives" {} +
((status == 0)) || die "a step failed"
say "all steps went well"
