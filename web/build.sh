#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Checks the types of the page of `cttool report` and builds it: web/build.sh [OUT], else dist/report.html.
# Installs what is missing.
set -euo pipefail
exec </dev/null
here=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
# shellcheck source=tools/setup.sh
source "$here/../tools/setup.sh"

out=$(readlink -m -- "${1:-$here/dist/report.html}")
# Some distributions of node have npm in it.
command -v npm >/dev/null || install_packages nodejs npm
cd -- "$here"
installed=node_modules/.installed
if [[ ! -e $installed ]] || ! cmp -s -- package-lock.json "$installed"; then
  say "installing what builds the page"
  npm ci --loglevel=error >&2 || die "npm could not install what builds the page"
  cp -- package-lock.json "$installed"
fi
node node_modules/typescript/bin/tsc --noEmit
node build.mjs "$out"
