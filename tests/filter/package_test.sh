#!/bin/sh
# SPDX-License-Identifier: MIT
# Installs, uses and removes the package under Wine: the zip as docs/integrating.md says, then the
# installer. Needs what scripts/package.sh has built; exits with 77 without it.
set -eu
root=$(cd "$(dirname "$0")/../.." && pwd)
zip=$(ls "$root"/build/package/*.zip 2>/dev/null) || exit 77
setup=$(ls "$root"/build/package/*-setup.exe)

scratch=$(mktemp -d)
export WINEPREFIX="$scratch/wine" WINEDEBUG=-all WINEDLLOVERRIDES=mscoree,mshtml=
# Wine's server ends by itself a little later; it must not find its folder gone before.
trap '/usr/lib/wine/wineserver64 -k -w; rm -rf "$scratch"' EXIT
wine() { /usr/lib/wine/wine64 "$@"; }
isRegistered() {
  wine reg query 'HKCR\CLSID\{092F2233-8FA7-431C-8000-B4FF545CFDC4}\InprocServer32' >"$scratch/key" 2>&1
}
fail() {
  echo "package_test: $1" >&2
  exit 1
}

cd "$scratch"
unzip -q "$zip"
cd TessarySubtitleConverter-*
grep -q "^PackageName: libtinyxml-dev$" TXSubtitleConverter.spdx || fail "no bill of materials"
[ -s notices/mingw-w64-common.txt ] || fail "no notices of what is linked in"
cp "$root/samples/captions.scc" .
wine txsub.exe extract -q captions.scc -o report.jsonl
wine cmd /c register.cmd >/dev/null 2>&1
isRegistered || fail "register.cmd did not register"
wine txgraph.exe report.jsonl --mode webvtt --page 1 -o graph.jsonl
wine txsub.exe convert -q report.jsonl --mode webvtt --page 1 -o direct.jsonl
cmp graph.jsonl direct.jsonl || fail "the registered module delivers something else"
wine cmd /c unregister.cmd >/dev/null 2>&1
isRegistered && fail "unregister.cmd did not unregister"
wine txgraph.exe report.jsonl --mode webvtt --page 1 -o none.jsonl 2>message &&
  fail "a module that is not registered was found"
grep -q "not registered" message || fail "no word of the missing registration: $(cat message)"

wine "$setup" /S
isRegistered || fail "the installer did not register"
grep -q "Program Files" "$scratch/key" || fail "the installer registered something else"
folder="$WINEPREFIX/drive_c/Program Files/Tessary Subtitle Converter"
wine "$folder/uninstall.exe" /S
# It goes on as a copy of itself, which the call does not wait for.
for _ in $(seq 60); do
  [ -e "$folder" ] || break
  sleep 0.5
done
isRegistered && fail "the uninstaller did not unregister"
[ -e "$folder" ] && fail "the uninstaller left behind: $(ls "$folder")"
exit 0
