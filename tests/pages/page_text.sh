# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# Sourced: pages as readers see them, with each paragraph on one line.

# page_section PAGE SECTION: the lines of one section.
page_section() {
  mandoc -T ascii -O width=1000 "$1" | sed 's/.\x08//g' | awk -v wanted="$2" '
    /^[^ ]/ { inside = $0 == wanted; next }
    inside' | grep .
}
