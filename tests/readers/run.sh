#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Opens what `cttool export` writes in the programs that people open it in, and compares what these say with
# the companion's own figures: tests/readers/run.sh CTTOOL [TRACE...]. Without TRACE those of ../shared/traces,
# a large one and random ones that are made here. Installs what is missing. Ends with the first check that
# fails.
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

# build_program PRESET TARGET [OPTIONS OF CMAKE]
build_program() {
  cmake -S "$root" --preset "$1" "${@:3}" >/dev/null || die "could not configure $root/build/$1"
  cmake --build "$root/build/$1" --target "$2" >/dev/null || die "could not build $2"
}

make_traces() {
  install_packages "${test_packages[@]}"
  build_program release make_trace -DCODETRACE_BENCH=ON
  "$root/build/release/bench/make_trace" 100000 "$readers/large.ct"
  build_program dev make_random_traces
  rm -rf -- "$readers/random"
  "$root/build/dev/tests/compare/make_random_traces" "$readers/random" 60 1
}

traces=("$@")
random_traces=()
if ((!${#traces[@]})); then
  shopt -s nullglob
  traces=("$root"/../shared/traces/*.ct)
  ((${#traces[@]})) || die "../shared/traces is missing"
  make_traces
  traces+=("$readers/large.ct")
  random_traces=("$readers"/random/*.ct)
fi

for script in speedscope_schema firefox_profiler callgrind duckdb; do
  "$node" "$readers/$script.mjs" "$cttool" "${traces[@]}"
done
for script in folded_weights json_lines csv_rows sqlite_shell; do
  python3 -B "$here/$script.py" "$cttool" "${traces[@]}"
done
if ((${#random_traces[@]})); then
  READERS=$readers/node_modules python3 -B "$here/random_traces.py" "$cttool" "${random_traces[@]}"
fi
# The browser takes long; one trace is enough for it.
"$node" "$readers/speedscope_app.mjs" "$cttool" "${traces[0]}"
say "all readers agree, after $SECONDS s"
