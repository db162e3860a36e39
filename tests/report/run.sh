#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Opens what `cttool report` writes in browsers, uses every control, and compares what the page says with the
# companion's own figures: tests/report/run.sh CTTOOL [TRACE...]. Without TRACE those of ../shared/traces and
# one of hostile texts. First builds the page anew: the one in web/dist has to be what web/src makes. Installs
# what is missing. Ends with the first check that fails.
set -euo pipefail
exec </dev/null
here=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
# shellcheck source=tools/setup.sh
source "$here/../../tools/setup.sh"
# shellcheck source=tests/readers/install.sh
source "$here/../readers/install.sh"

[[ -x ${1-} ]] || die "usage: tests/report/run.sh CTTOOL [TRACE...]"
cttool=$(readlink -f -- "$1")
shift
install_readers
install_packages firefox-esr
# They find the programs that npm has where these are installed.
cp -- "$here"/*.mjs "$readers/"

check_page() {
  local built=$root/build/report.html
  "$root/web/build.sh" "$built"
  cmp -- "$built" "$root/web/dist/report.html" || die "web/dist/report.html is not what web/src makes: run web/build.sh"
}

make_hostile_trace() {
  install_packages "${test_packages[@]}"
  cmake -S "$root" --preset dev >/dev/null || die "could not configure $root/build/dev"
  cmake --build "$root/build/dev" --target make_hostile_trace >/dev/null || die "could not build make_hostile_trace"
  "$root/build/dev/tests/report/make_hostile_trace" "$readers/hostile.ct"
}

check_page
make_random_traces() {
  cmake --build "$root/build/dev" --target make_random_traces >/dev/null || die "could not build make_random_traces"
  rm -rf -- "$readers/random"
  "$root/build/dev/tests/compare/make_random_traces" "$readers/random" 60 1
  local trace
  for trace in "$readers"/random/*.ct; do
    # Some are no whole files.
    "$cttool" summary "$trace" &>/dev/null || rm -- "$trace"
  done
}

traces=("$@")
random_traces=()
if ((!${#traces[@]})); then
  shopt -s nullglob
  traces=("$root"/../shared/traces/*.ct)
  ((${#traces[@]})) || die "../shared/traces is missing"
  make_hostile_trace
  make_random_traces
  random_traces=("$readers"/random/*.ct "$readers/hostile.ct")
  "$node" "$readers/hostile_report.mjs" "$cttool" "$readers/hostile.ct"
fi
"$node" "$readers/report_values.mjs" "$cttool" "${traces[@]}" "${random_traces[@]}"
for script in report_figures report_controls report_firefox; do
  "$node" "$readers/$script.mjs" "$cttool" "${traces[@]}"
done
# Each takes 80 looks; the last ones have everything that a view can show.
"$node" "$readers/report_accessibility.mjs" "$cttool" "${traces[@]: -2}"
say "reports are in order, after $SECONDS s"
