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
# shellcheck source=tests/readers/install.sh
source "$here/install.sh"

[[ -x ${1-} ]] || die "usage: tests/readers/run.sh CTTOOL [TRACE...]"
cttool=$(readlink -f -- "$1")
shift
install_readers

make_large_trace() {
  install_packages "${build_packages[@]}"
  cmake -S "$root" --preset release -DCODETRACE_BENCH=ON >/dev/null
  cmake --build "$root/build/release" --target make_trace >/dev/null
  "$root/build/release/bench/make_trace" 100000 "$readers/large.ct"
}

traces=("$@")
if ((!${#traces[@]})); then
  shopt -s nullglob
  traces=("$root"/../shared/traces/*.ct)
  ((${#traces[@]})) || die "../shared/traces is missing"
  make_large_trace
  traces+=("$readers/large.ct")
fi

for script in speedscope_schema firefox_profiler callgrind duckdb; do
  "$node" "$readers/$script.mjs" "$cttool" "${traces[@]}"
done
for script in folded_weights json_lines csv_rows sqlite_shell; do
  python3 -B "$here/$script.py" "$cttool" "${traces[@]}"
done
# The browser takes long; one trace is enough for it.
"$node" "$readers/speedscope_app.mjs" "$cttool" "${traces[0]}"
say "all readers agree, after $SECONDS s"
