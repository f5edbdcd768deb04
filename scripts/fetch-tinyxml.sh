#!/bin/sh
# SPDX-License-Identifier: MIT
# Puts Debian's TinyXML source, with Debian's patches, into build/tinyxml: the Windows build compiles
# it, so that both platforms write the same documents. Quick when it is there. Needs no root.
set -eu
cd "$(dirname "$0")/.."
destination=$PWD/build/tinyxml
[ -f "$destination/tinyxml.cpp" ] && exit 0

# A package index of our own: the machine's may know no source packages.
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir -p "$scratch/lists/partial" "$scratch/cache/archives/partial" "$(dirname "$destination")"
keyring=/usr/share/keyrings/debian-archive-keyring.gpg
cat >"$scratch/sources.list" <<END
deb-src [signed-by=$keyring] http://deb.debian.org/debian bookworm main
deb-src [signed-by=$keyring] http://deb.debian.org/debian-security bookworm-security main
END
apt_get() {
  apt-get -qq -o Dir::Etc::SourceList="$scratch/sources.list" -o Dir::Etc::SourceParts=/dev/null \
    -o Dir::State::Lists="$scratch/lists" -o Dir::Cache="$scratch/cache" \
    -o APT::Sandbox::User="$(id -un)" "$@"
}

echo "fetch-tinyxml: fetching Debian's source package"
(
  cd "$scratch"
  apt_get update
  apt_get source tinyxml
) >"$scratch/log" 2>&1 || {
  cat "$scratch/log" >&2
  exit 1
}
rm -rf "$destination"
mv "$scratch"/tinyxml-*/ "$destination"
