#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# setup_test.sh ROOT: what tools/setup.sh says and does about missing packages: as root and as somebody
# else, with sudo and without, in a script and at a terminal. apt is a stand-in here.
set -euo pipefail
folder=$(mktemp -d)
trap 'rm -rf -- "$folder"' EXIT
bin=$folder/bin
failures=0

# No program is there but these and the ones that are made.
mkdir -- "$bin"
for program in bash dirname env script sh; do ln -s -- "$(command -v $program)" "$bin"; done
make_program() {
  { echo '#!/bin/sh' && cat; } >"$bin/$1"
  chmod +x -- "$bin/$1"
}
make_program dpkg-query <<<'echo g++=installed'
make_program id <<'END'
echo "$USER_ID"
END
make_program apt-get <<'END'
case " $* " in
  *' --assume-no '*)
    echo '0 upgraded, 182 newly installed, 0 to remove and 3 not upgraded.'
    echo 'Need to get 12.5 MB/240 MB of archives.'
    echo 'After this operation, 1,023 MB of additional disk space will be used.'
    exit 1 ;;
  *) echo "$*" >>"$CALLS" ;;
esac
END
cat >"$folder/install" <<'END'
set -euo pipefail
source "$1/tools/setup.sh"
install_packages g++ cmake libfmt-dev </dev/null
END
command=(bash "$folder/install" "$1")

# install USER_ID COMMAND...: sets said, calls (without the options that all have) and status.
install() {
  : >"$folder/calls"
  status=0
  env -i PATH="$bin" SHELL=/bin/bash CALLS="$folder/calls" USER_ID="$1" "${@:2}" \
    >"$folder/said" 2>&1 || status=$?
  said=$(tr -d '\r' <"$folder/said")
  calls=$(sed -E 's/^-qq( -o [^ ]+)* //' "$folder/calls")
}

# expect WHAT EXPECTED IS
expect() {
  [[ $2 != "$3" ]] || return 0
  printf '%s: expected\n%s\nbut there is\n%s\n' "$1" "$2" "$3"
  failures=$((failures + 1))
}

missing='codetrace set-up: these packages are missing: cmake libfmt-dev
codetrace set-up: with all that they need: 182 packages, 12.5 MB to download, 1,023 MB on the disk'
apt_install='install -y --no-install-recommends cmake libfmt-dev'

install 0 "${command[@]}" </dev/null
expect "as root" "$missing"$'\ncodetrace set-up: installing' "$said"
expect "status as root" 0 "$status"
expect "calls as root" $'update\n'"$apt_install" "$calls"

install 1000 "${command[@]}" </dev/null
expect "without sudo" "$missing"'
codetrace set-up: only root can install them, and there is no sudo; an administrator can, with
  apt install --no-install-recommends cmake libfmt-dev' "$said"
expect "status without sudo" 1 "$status"
expect "calls without sudo" '' "$calls"

make_program sudo <<'END'
echo sudo >>"$CALLS"
exec "$@"
END
install 1000 "${command[@]}" </dev/null
expect "status with sudo" 0 "$status"
expect "calls with sudo" $'sudo\nupdate\nsudo\n'"$apt_install" "$calls"

if ! script -qec true /dev/null </dev/null >/dev/null 2>&1; then
  echo "SKIPPED: the question at a terminal, for /dev/pts is missing or cannot be used"
  exit $((failures != 0))
fi
question='codetrace set-up: install them? [Y/n] '
for answer in '' y Yes; do
  install 0 script -qec "${command[*]}" /dev/null <<<"$answer"
  expect "the question" "$question" "$(grep -o "codetrace.*? \[Y/n\] " <<<"$said")"
  expect "status of '$answer'" 0 "$status"
  expect "calls of '$answer'" $'update\n'"$apt_install" "$calls"
done
for answer in n No; do
  install 0 script -qec "${command[*]}" /dev/null <<<"$answer"
  expect "what is said last" "codetrace set-up: nothing was installed" "${said##*\[Y/n] }"
  expect "status of '$answer'" 1 "$status"
  expect "calls of '$answer'" update "$calls"
done
((failures == 0))
