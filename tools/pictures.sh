#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Makes the pictures of docs/exports.md anew, a trace in each of three viewers: tools/pictures.sh CTTOOL TRACE.
# For somebody who looks at them afterwards: clicks go to places, and other versions may have others there.
set -euo pipefail
# shellcheck source=tools/setup.sh
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/setup.sh"

(($# == 2)) || die "usage: tools/pictures.sh CTTOOL TRACE"
cttool=$(readlink -f -- "$1")
trace=$(readlink -f -- "$2")
install_packages kcachegrind graphviz xvfb xauth xdotool imagemagick dbus-daemon pngquant fonts-dejavu-core \
  fonts-noto-color-emoji breeze-icon-theme
# This installs what the browser's part needs.
"$root/tests/readers/run.sh" "$cttool" "$root/examples/notes.ct"

folder=$(mktemp -d)
trap 'rm -rf -- "$folder"' EXIT
cd -- "$folder"
"$root/build/readers/node_modules/.bin/node" "$root/build/readers/pictures.mjs" "$cttool" "$trace"

mkdir -m 700 config run
printf '[TipOfDay]\nRunOnStart=false\n' >config/kcachegrindrc
"$cttool" export "$trace" --to callgrind -o callgrind.out.webapp
# shellcheck disable=SC2016
XDG_CONFIG_HOME=$folder/config XDG_RUNTIME_DIR=$folder/run QT_SCALE_FACTOR=1 \
  xvfb-run -s '-screen 0 1000x640x24' dbus-run-session -- bash -c '
    set -e
    kcachegrind callgrind.out.webapp &
    sleep 8
    window=$(xdotool search --onlyvisible --name " — KCachegrind$")
    xdotool windowmove "$window" 0 0 windowsize "$window" 1000 640
    sleep 2
    for place in $1; do
      xdotool mousemove "${place%,*}" "${place#*,}" click 1
      sleep 2
    done
    import -window "$window" kcachegrind.png
    kill "$!"' -- "${CLICKS-}" 2>/dev/null

mkdir -p -- "$root/docs/pictures"
for name in speedscope devtools kcachegrind; do
  pngquant --force --speed 1 --output "$root/docs/pictures/$name.png" 128 "$name.png"
done
ls -l -- "$root/docs/pictures"
