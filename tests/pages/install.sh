#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# install.sh BUILD SOURCE: whether `cmake --install` puts pages and completions where man and the
# shells look for them, and the README with what it names first into the documentation.
set -euo pipefail
build=$1
source=$2
prefix=$(mktemp -d)
trap 'rm -rf -- "$prefix"' EXIT
for component in tool companion; do
  cmake --install "$build" --component $component --prefix "$prefix" >/dev/null
done
share=$prefix/share
diff "$source/man/codetrace.1" "$share/man/man1/codetrace.1"
diff "$source/man/codetrace.5" "$share/man/man5/codetrace.5"
diff "$source/completions/codetrace.bash" "$share/bash-completion/completions/codetrace"
diff "$source/completions/_codetrace" "$share/zsh/site-functions/_codetrace"
diff "$source/completions/codetrace.fish" "$share/fish/vendor_completions.d/codetrace.fish"
diff "$source/man/cttool.1" "$share/man/man1/cttool.1"
diff "$source/completions/cttool.bash" "$share/bash-completion/completions/cttool"
diff "$source/completions/_cttool" "$share/zsh/site-functions/_cttool"
diff "$source/completions/cttool.fish" "$share/fish/vendor_completions.d/cttool.fish"
[[ -e $(echo "$prefix"/lib*/codetrace/codetrace.so) || -e $(echo "$prefix"/lib/*/codetrace/codetrace.so) ]]
for file in "$source"/share/*.schema.json; do
  cmp "$file" "$share/codetrace/${file##*/}"
done
for file in README.md SECURITY.md docs/{cookbook,outputs,robustness,tools}.md examples/{notes,words}.ct; do
  cmp "$source/$file" "$share/doc/codetrace/$file"
done
