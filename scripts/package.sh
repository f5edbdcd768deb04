#!/bin/sh
# SPDX-License-Identifier: MIT
# Builds the Windows package, a zip and an installer, in build/package, and tries both under Wine.
set -eu
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake --preset windows >/dev/null
cmake --build --preset windows

output=$PWD/build/package
rm -rf "$output"
mkdir -p "$output"
cpack --config build/windows/CPackConfig.cmake -B "$output" >/dev/null
rm -rf "$output/_CPack_Packages"
zip=$(ls "$output"/*.zip)
name=$(basename "$zip" .zip)
version=${name#TessarySubtitleConverter-}
version=${version%-win64}

(cd "$output" && unzip -q "$zip")
makensis -V2 -DVERSION="$version" -DCONTENT="$output/$name" -DOUTPUT="$output/$name-setup.exe" \
  packaging/installer.nsi
rm -rf "${output:?}/$name"
ls -1 "$output"

echo "package: installing, using and removing it under Wine"
tests/filter/package_test.sh >/dev/null 2>&1 || {
  echo "package: tests/filter/package_test.sh failed" >&2
  exit 1
}
