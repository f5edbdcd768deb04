#!/bin/sh
# SPDX-License-Identifier: MIT
# Installs the program into a folder of its own, and runs it from there: with the modules that it
# loads late, and nothing of the build.
set -eu
cmake=$1
build=$2
root=$(cd "$(dirname "$0")/../.." && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() {
  echo "install_test: $1" >&2
  exit 1
}

"$cmake" --install "$build" --prefix "$scratch/usr" >"$scratch/log" || {
  cat "$scratch/log" >&2
  fail "cmake --install failed"
}
for file in bin/txsub lib/txsub/txsub-avformat.so lib/txsub/txsub-pango.so \
  share/man/man1/txsub.1 share/doc/*/rules.md share/doc/*/notices/libcli11-dev.txt; do
  ls "$scratch"/usr/$file >/dev/null || fail "$file is not installed"
done
grep -q "^FileName: ./txsub/main.cpp$" "$scratch"/usr/share/doc/*/txsub.spdx ||
  fail "the bill of materials lacks our files"
grep -q "^PackageName: libcli11-dev$" "$scratch"/usr/share/doc/*/txsub.spdx ||
  fail "the bill of materials lacks what is built in"
txsub=$scratch/usr/bin/txsub
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")
case $("$txsub" --version) in
  "txsub $version" | "txsub $version ("*")") ;;  # of a checkout, with its commit
  *) fail "--version says '$("$txsub" --version)'" ;;
esac

words=$(bash -c ". $scratch/usr/share/bash-completion/completions/txsub
  COMP_WORDS=(txsub convert news.ts --non); COMP_CWORD=3; _txsub; echo \"\${COMPREPLY[*]}\"")
[ "$words" = --non-drop ] || fail "bash completes --non with '$words'"

cd "$scratch"
"$txsub" render -q --at 2 "$root/samples/captions.ts" -o frame.png || fail "it cannot draw"
ffmpeg -v error -i "$root/samples/captions.ts" -c copy captions.mkv
"$txsub" convert -q captions.mkv -o direct.srt || fail "it cannot read Matroska"
grep -q "the news from the harbour" direct.srt || fail "Matroska gave: $(cat direct.srt)"
