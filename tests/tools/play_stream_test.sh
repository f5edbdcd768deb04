#!/bin/sh
# SPDX-License-Identifier: MIT
# Has hls.js, Shaka Player and dash.js play what `txsub stream` writes. Skips (77) where the tools are
# not at hand.
#   play_stream_test.sh TXSUB DIRECTORY
set -eu

skip() {
  echo "skipped: $1"
  exit 77
}

for tool in node chromium ffmpeg; do
  command -v "$tool" >/dev/null || skip "$tool is not installed"
done
for package in puppeteer-core hls.js shaka-player dashjs; do
  [ -d "tests/tools/node_modules/$package" ] || skip "scripts/setup.sh has not installed $package"
done
CHROMIUM=$(command -v chromium)
export CHROMIUM
exec node tests/tools/play_stream.mjs "$1" "$2" samples/teletext.ts 888 fr
