#!/usr/bin/env fish
# SPDX-License-Identifier: MIT
# offers.fish COMPLETION LINE: what fish offers at the end of the line, one a line: the word and,
# behind a tab, its description if it has one.
source $argv[1]
complete -C $argv[2]
