#!/bin/sh
# SPDX-License-Identifier: MIT
# Builds the Debian packages of the last commit in build/debian, and tries them: lintian, installed into
# a folder of their own, used, removed. With --reproducible they are built a second time, elsewhere, and
# both must be equal byte for byte.
set -eu
cd "$(dirname "$0")/.."
scripts/setup.sh
output=$PWD/build/debian
rm -rf "$output"
mkdir -p "$output"

fail() {
  echo "debian: $1" >&2
  exit 1
}

build() { # FOLDER
  mkdir -p "$output/$1/txsub"
  git archive HEAD | tar -x -C "$output/$1/txsub"
  (cd "$output/$1/txsub" && DEB_BUILD_OPTIONS=noautodbgsym dpkg-buildpackage --build=binary --no-sign --jobs="$(nproc)") \
    >"$output/$1/build.log" 2>&1 || {
    tail -n 30 "$output/$1/build.log" >&2
    fail "dpkg-buildpackage failed"
  }
  rm -rf "$output/$1/txsub"
}

# A compiler cache leaves paths of other builds in what debuggers are told.
[ "${1:-}" != --reproducible ] || export CCACHE_DISABLE=1
build packages
if [ "${1:-}" = --reproducible ]; then
  build again-elsewhere
  for package in "$output"/packages/*.deb; do
    cmp "$package" "$output/again-elsewhere/$(basename "$package")" ||
      fail "a second build of $(basename "$package") differs"
  done
  echo "debian: two builds are equal"
fi

lintian --fail-on error,warning --allow-root "$output"/packages/*.changes || fail "lintian has complaints"

# Into a folder, without what they depend on, which is this machine's.
root=$output/root
mkdir -p "$root/var/lib/dpkg/updates" "$root/var/lib/dpkg/info"
: >"$root/var/lib/dpkg/status"
into_root() {
  dpkg --root="$root" --force-not-root --force-depends --force-script-chrootless "$@" \
    >>"$output/dpkg.log" 2>&1 || fail "dpkg $1 failed: see $output/dpkg.log"
}
into_root --install "$output"/packages/*.deb
txsub=$root/usr/bin/txsub
"$txsub" convert -q samples/captions.ts -o "$output/captions.srt"
grep -q "the news from the harbour" "$output/captions.srt" || fail "the program does not convert"
"$txsub" render -q samples/captions.ts --at 2 -o "$output/frame.png" || fail "the program does not draw"
"$txsub" convert -q samples/dvb.ts -o "$output/dvb.srt" || fail "the program does not read pictures"
PYTHONPATH=$root/usr/lib/python3/dist-packages LD_LIBRARY_PATH=$(dirname "$root"/usr/lib/*/libtxsub.so.1) \
  /usr/bin/python3 -c 'import txsub; print(len(list(txsub.open("samples/captions.ts"))), "cues in Python")' ||
  fail "Python does not find the library"
into_root --remove $(dpkg --root="$root" --get-selections | cut -f 1)
[ -z "$(find "$root/usr" -type f 2>/dev/null)" ] || fail "what is removed leaves files: $(find "$root/usr" -type f)"
rm -rf "$root"
ls "$output"/packages/*.deb
