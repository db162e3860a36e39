# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# Sourced: what `codetrace -h` says about the options.

# help_options BINARY: a line for each option: its names as the help text has them, a tab, the first
# line of its description, a tab, what the other lines say.
help_options() {
  "$1" -h | awk '
    function finish() { if (names != "") print names "\t" first "\t" rest }
    /^  -/ {
      finish()
      match($0, /[^ ]  +[^ ]/)
      names = substr($0, 3, RSTART - 2)
      first = substr($0, RSTART + RLENGTH - 1)
      rest = ""
    }
    /^    / { sub(/^ +/, ""); rest = rest " " $0 }
    END { finish() }' | grep .
}

# help_words BINARY: a line for each word that begins an option: the word, a tab, the first line of
# the description.
help_words() {
  help_options "$1" | awk -F '\t' '{
    count = split($1, names, /, /)
    for (i = 1; i <= count; ++i) {
      sub(/ .*/, "", names[i])
      print names[i] "\t" $2
    }
  }'
}
