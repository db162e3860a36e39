# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# Sourced by tests of what verbs say: a folder for the test that goes with it, and `expect`, which counts
# in `failures` what is not as it should be.
work=$(mktemp -d)
# Not by jobs that are ended before they are another program.
trap '[[ $BASHPID != "$$" ]] || rm -rf -- "$work"' EXIT
failures=0

fail() {
  echo "$*"
  failures=$((failures + 1))
}

# expect STATUS WORDS COMMAND...: it ends so, and says the words on standard error.
expect() {
  local wanted=$1 words=$2 status=0
  shift 2
  "$@" >"$work/out" 2>"$work/err" || status=$?
  ((status == wanted)) || fail "status $status, not $wanted: $*"
  [[ $(cat -- "$work/err") == *"$words"* ]] || fail "does not say '$words': $* : $(cat "$work/err")"
}
