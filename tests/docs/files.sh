# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# Sourced by the checks of the tree's text.

# Prints the files that belong to the project in the current folder, each with a NUL behind it: what
# git knows or, outside of a checkout, what is there.
project_files() {
  if [[ -e .git ]] && git -c safe.directory="$PWD" rev-parse >/dev/null 2>&1; then
    local path
    while IFS= read -r -d '' path; do
      [[ ! -f $path ]] || printf '%s\0' "$path"
    done < <(git -c safe.directory="$PWD" ls-files -z)
  else
    find . -path ./build -prune -o -type f -printf '%P\0'
  fi
}
