#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Run inside the chroot by try-in-chroot.sh: installs the packages that lie beside it, uses them,
# removes them, and looks for what they left behind.
set -euo pipefail
cd -- "$(dirname -- "${BASH_SOURCE[0]}")"
export LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive MANPAGER=cat MANWIDTH=80

step() { printf '\n== %s\n' "$*"; }
die() {
  echo "$*"
  exit 1
}
install() { apt-get -qq install -y --no-install-recommends "$@" >/dev/null; }
# man keeps formatted pages by itself.
names_left() {
  find / -xdev \( -path /try -o -path /var/cache/man \) -prune -o -iname '*codetrace*' -print
}

step "the shells and man"
apt-get -qq update
install man-db bash-completion zsh fish
[[ -z $(names_left) ]] || die "the chroot is not clean"

step "apt installs the tool alone"
install ./codetrace_*.deb
dpkg -s codetrace | grep -E '^(Version|Depends)'
cd /tmp
codetrace --version
codetrace /try/notes.ct >text
head -n 3 text
(($(wc -l <text) > 1000)) || die "the tool prints too little"
codetrace -J -o document.json /try/notes.ct
rm -- text document.json
cd /try

step "apt installs the companion"
install ./codetrace-tools_*.deb
dpkg -s codetrace-tools | grep -E '^(Version|Depends)'
cttool --version
cttool top /try/notes.ct >text
head -n 3 text
rm -- text

step "the documentation"
doc=/usr/share/doc/codetrace
(cd $doc && codetrace examples/notes.ct >/dev/null && codetrace examples/words.ct >/dev/null)
for page in README.md docs/cookbook.md; do
  zcat $doc/$page.gz >page
  sed -n 2p page
done

step "man"
for name in codetrace.1 cttool.1 codetrace.5; do
  man "${name#*.}" "${name%.*}" >page 2>&1 || die "man shows no page $name"
  head -n 6 page
done
rm -- page

step "completions"
complete_in_bash() {
  bash -c 'source /usr/share/bash-completion/bash_completion
    _completion_loader codetrace; complete -p codetrace'
}
complete_in_zsh() {
  zsh -fc "autoload -Uz compinit; compinit -u -D; print -r -- \$_comps[codetrace]" |
    grep -x _codetrace
}
complete_in_fish() { fish -c 'complete -C "codetrace --js"' | grep -e '--json'; }
for shell in bash zsh fish; do
  complete_in_$shell || die "$shell does not complete"
done

step "apt installs the library, and a program is built"
install ./libcodetrace3_*.deb ./libcodetrace-dev_*.deb g++ cmake ninja-build pkg-config jq
for way in cmake pkg-config; do
  package/consumer.sh $way g++ /usr notes.ct
  echo "found by $way, linked both ways"
done

step "apt removes all"
packages=(codetrace codetrace-tools libcodetrace3 libcodetrace-dev)
dpkg -L "${packages[@]}" | grep -E '[^/]$' | sort -u >files
apt-get -qq purge -y "${packages[@]}" >/dev/null
left=$(names_left)
[[ -z $left ]] || die "left behind:"$'\n'"$left"
while read -r file; do
  [[ -d $file || ! -e $file ]] || die "left behind: $file"
done <files
! ldconfig -p | grep codetrace || die "the loader still knows the library"
echo "nothing is left of $(wc -l <files) files and folders"
