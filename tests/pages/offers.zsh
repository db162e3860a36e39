#!/usr/bin/env zsh
# SPDX-License-Identifier: MIT
# offers.zsh COMPLETION LINE: what zsh offers at the end of the line, one a line: the word and,
# behind a tab, its description if it has one.
#
# Completion only works on a command line, so a second zsh gets one on a terminal of its own. What is
# typed there ends in a tab; a compadd that writes down what it adds then tells what was offered.
zmodload zsh/zpty
export COMPLETION_FOLDER=${1:A:h} OFFERED=$(mktemp)
trap 'rm -f -- $OFFERED' EXIT

zpty inner "stty columns 250; exec zsh -f -i"
zpty -w inner "source ${(q)0:A:h}/offers_hook.zsh"
zpty -r inner shown '*READY*'
zpty -w -n inner $2$'\t'
zpty -w inner $'\C-uexit'
while zpty -r inner shown; do :; done
cat -- $OFFERED
