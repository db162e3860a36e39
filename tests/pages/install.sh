#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# install.sh BUILD SOURCE: whether `cmake --install` puts pages and completions where man and the
# shells look for them, and the README with what it names first into the documentation.
set -euo pipefail
build=$1
source=$2
prefix=$(mktemp -d)
trap 'rm -rf -- "$prefix"' EXIT
cmake --install "$build" --component tool --prefix "$prefix" >/dev/null
share=$prefix/share
diff "$source/man/codetrace.1" "$share/man/man1/codetrace.1"
diff "$source/man/codetrace.5" "$share/man/man5/codetrace.5"
diff "$source/completions/codetrace.bash" "$share/bash-completion/completions/codetrace"
diff "$source/completions/_codetrace" "$share/zsh/site-functions/_codetrace"
diff "$source/completions/codetrace.fish" "$share/fish/vendor_completions.d/codetrace.fish"
for file in README.md SECURITY.md docs/{cookbook,outputs,robustness}.md examples/{notes,words}.ct; do
  cmp "$source/$file" "$share/doc/codetrace/$file"
done
