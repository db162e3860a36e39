#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# man_options.sh BINARY PAGE: whether codetrace(1) and `codetrace -h` have the same options with the
# same arguments and descriptions, in the same order, and both the same version.
set -euo pipefail
# shellcheck source=tests/pages/help_options.sh
source "$(dirname -- "$0")/help_options.sh"
# shellcheck source=tests/pages/page_text.sh
source "$(dirname -- "$0")/page_text.sh"
binary=$1
page=$2

# The first paragraph of an option's description is the one of the help text.
page_options() {
  page_section "$page" DESCRIPTION | awk '
    /^     -/ {
      sub(/^ +/, "")
      names = $0
      if (match(names, /  +/)) {
        print substr(names, 1, RSTART - 1) ": " substr(names, RSTART + RLENGTH)
        names = ""
      }
      next
    }
    names != "" { sub(/^ +/, ""); print names ": " $0; names = "" }' | tr -s ' '
}

expected=$(help_options "$binary" | awk -F '\t' '{ print $1 ": " $2 $3 }' | tr -d '<>')
diff <(echo "$expected") <(page_options) || {
  echo "the help text (<) and codetrace(1) (>) differ"
  exit 1
}

letters_of_help=$(help_words "$binary" | grep -o '^-[A-Za-z]' | tr -d -- - | sort)
letters_of_synopsis=$(page_section "$page" SYNOPSIS | grep -oE -- '-[A-Za-z]+' | tr -d -- - |
  fold -w 1 | sort)
diff <(echo "$letters_of_help") <(echo "$letters_of_synopsis") || {
  echo "the help text (<) and the synopsis of codetrace(1) (>) differ"
  exit 1
}

version=$("$binary" -V | grep -o 'version .*')
[[ $(page_section "$page" HISTORY) == *"$version."* ]] || {
  echo "codetrace(1) does not tell $version"
  exit 1
}
