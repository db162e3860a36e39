# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# Sourced by ./run, ./test and .ci/run: installs Debian packages and builds. What it has to say goes
# to standard error, and only when there is something to do. A step that fails ends the caller.
# Before packages are installed it says which and how much, and asks a person at a terminal.

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd -P)
build_packages=(g++ cmake ninja-build qt6-base-dev libfmt-dev libcli11-dev libsqlite3-dev
  zlib1g-dev liblzma-dev libzstd-dev libisal-dev pkg-config)
test_packages=("${build_packages[@]}" libgtest-dev libgmock-dev jq codespell mandoc
  bash-completion zsh fish python3-jsonschema sqlite3 xz-utils zstd)

# Whether somebody is there to answer; set_up has another input.
person=
if [[ -t 0 && -t 2 ]]; then person=yes; fi

say() { printf 'codetrace set-up: %s\n' "$*" >&2; }
die() {
  say "$@"
  exit 1
}

# Prints those of the named packages that are missing. On a system without Debian's packages that is
# none; the build then tells what it lacks.
missing_packages() {
  local package have
  command -v dpkg-query >/dev/null || return 0
  have=$(dpkg-query -W -f='${Package}=${db:Status-Status}\n' "$@" 2>/dev/null) || true
  for package in "$@"; do
    [[ $'\n'$have$'\n' == *$'\n'"$package=installed"$'\n'* ]] || echo "$package"
  done
}

# Says how much apt would install for the named packages, as far as it can tell.
say_how_much() {
  local answer count download disk
  answer=$(LC_ALL=C apt-get -q -o Debug::NoLocking=1 install --assume-no --no-install-recommends \
    "$@" 2>/dev/null) || true # the answer "no"
  [[ $answer =~ ([0-9]+)' newly installed' ]] || return 0
  count=${BASH_REMATCH[1]}
  [[ $answer =~ 'Need to get '([0-9.,]+' '[kMG]?B) ]] || return 0
  download=${BASH_REMATCH[1]}
  [[ $answer =~ 'this operation, '([0-9.,]+' '[kMG]?B)' of additional' ]] || return 0
  disk=${BASH_REMATCH[1]}
  say "with all that they need: $count packages, $download to download, $disk on the disk"
}

# May they be installed? Only a person at a terminal is asked.
may_install() {
  local answer
  [[ $person ]] || return 0
  printf 'codetrace set-up: install them? [Y/n] ' >&2
  read -r answer </dev/tty || answer=no
  [[ ! $answer || $answer == [Yy]* ]]
}

install_packages() {
  local names missing as_root=() apt_options=(-qq -o DPkg::Lock::Timeout=600 -o Acquire::Retries=3)
  names=$(missing_packages "$@")
  [[ $names ]] || return 0
  mapfile -t missing <<<"$names"
  say "these packages are missing: ${missing[*]}"
  if (($(id -u) != 0)); then
    command -v sudo >/dev/null || {
      say_how_much "${missing[@]}"
      say "only root can install them, and there is no sudo; an administrator can, with"
      printf '  apt install --no-install-recommends %s\n' "${missing[*]}" >&2
      exit 1
    }
    as_root=(sudo)
  fi
  as_root+=(env DEBIAN_FRONTEND=noninteractive)
  "${as_root[@]}" apt-get "${apt_options[@]}" update ||
    say "the package lists could not be brought up to date; trying with the old ones"
  say_how_much "${missing[@]}"
  may_install || die "nothing was installed"
  say "installing"
  "${as_root[@]}" apt-get "${apt_options[@]}" install -y --no-install-recommends "${missing[@]}" ||
    die "could not install ${missing[*]}"
}

# What a build folder depends on beside the sources: where it lies and the system it is for.
build_identity() { printf '%s\n' "$root" "$HOSTTYPE" "$(cat /etc/os-release 2>/dev/null)"; }

# is_ready PRESET PACKAGE...: whether set_up would change nothing about the tool.
is_ready() {
  local folder=$root/build/$1
  [[ -x $folder/src/codetrace && -e $folder/.built && -e $folder/.made-for ]] &&
    [[ $(<"$folder/.made-for") == "$(build_identity)" ]] &&
    [[ -z $(find "$root/src" "$root/cmake" "$root/CMakeLists.txt" "$root/CMakePresets.json" \
      -newer "$folder/.built" -print -quit) ]] &&
    [[ -z $(missing_packages "${@:2}") ]]
}

configure_and_build() {
  local folder=$root/build/$1
  if [[ -e $folder/.made-for && $(<"$folder/.made-for") != "$(build_identity)" ]]; then
    rm -rf -- "$folder"
  fi
  mkdir -p -- "$folder"
  build_identity >"$folder/.made-for"
  : >"$folder/.building" # older than any source that changes from now on
  cd -- "$root"
  cmake --preset "$1" || die "could not configure $folder"
  cmake --build --preset "$1" || die "could not build $folder"
  mv -- "$folder/.building" "$folder/.built"
}

# set_up PRESET PACKAGE...: installs what is missing and builds. Of several that are started at once,
# one works and the others wait.
set_up() {
  mkdir -p -- "$root/build" || die "cannot write to $root"
  (
    flock 9 || die "cannot lock $root/build"
    # Nothing that outlives this, such as a service that a package starts, may keep the lock.
    install_packages "${@:2}" 9>&-
    say "building $root/build/$1"
    configure_and_build "$1" 9>&-
  ) 9>"$root/build/.lock" </dev/null >&2
}
