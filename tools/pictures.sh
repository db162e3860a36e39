#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Makes the pictures of docs/exports.md anew, a trace in each of three viewers, and those of docs/report.md, of
# examples/notes.ct: tools/pictures.sh CTTOOL TRACE. For somebody who looks at them afterwards: clicks go to
# places, and other versions may have others there.
set -euo pipefail
# shellcheck source=tools/setup.sh
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/setup.sh"
# shellcheck source=tests/readers/install.sh
source "$root/tests/readers/install.sh"

(($# == 2)) || die "usage: tools/pictures.sh CTTOOL TRACE"
cttool=$(readlink -f -- "$1")
trace=$(readlink -f -- "$2")
install_packages kcachegrind graphviz xvfb xauth xdotool imagemagick dbus-daemon pngquant fonts-dejavu-core \
  fonts-noto-color-emoji breeze-icon-theme
install_readers

folder=$(mktemp -d)
trap 'rm -rf -- "$folder"' EXIT
cd -- "$folder"
"$node" "$readers/pictures.mjs" "$cttool" "$trace"
cp -- "$root"/tests/report/*.mjs "$readers/"
# The report shows the name that it was made by.
mkdir examples
cp -- "$root/examples/notes.ct" examples/
"$node" "$readers/report_pictures.mjs" "$cttool" examples/notes.ct

# KCachegrind on a screen of its own: a function is chosen, then the map and the graph of what it calls.
mkdir -m 700 config run
printf '[TipOfDay]\nRunOnStart=false\n' >config/kcachegrindrc
profile=callgrind.out.$(basename -- "$trace" .ct)
"$cttool" export "$trace" --to callgrind -o "$profile"
cat >look.sh <<'END'
set -e
kcachegrind "$1" &
viewer=$!
sleep 6
window=$(xdotool search --onlyvisible --class kcachegrind)
xdotool windowmove "$window" 0 0 windowsize "$window" 1000 640
sleep 2
for place in '240 199' '615 103' '521 596'; do
  # shellcheck disable=SC2086
  xdotool mousemove $place click 1
  sleep 2
done
import -window "$window" kcachegrind.png
kill "$viewer"
END
XDG_CONFIG_HOME=$folder/config XDG_RUNTIME_DIR=$folder/run xvfb-run -a -s '-screen 0 1000x640x24' \
  dbus-run-session -- bash look.sh "$profile" >look.log 2>&1 || die "KCachegrind: $(<look.log)"

mkdir -p -- "$root/docs/pictures"
for name in speedscope devtools kcachegrind report-overview report-flame; do
  pngquant --force --speed 1 --output "$root/docs/pictures/$name.png" 128 "$name.png"
done
ls -l -- "$root/docs/pictures"
