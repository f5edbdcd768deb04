#!/bin/sh
# SPDX-License-Identifier: MIT
# Takes the README's picture, docs/preview.png: a page of `txsub preview`, in Chromium.
set -eu
cd "$(dirname "$0")/.."
cmake --preset native >/dev/null
cmake --build --preset native --target txsub >/dev/null
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
build/native/bin/txsub preview -q samples/dvb.ts -o "$scratch/page.html"
chromium --headless --no-sandbox --disable-gpu --hide-scrollbars --window-size=1200,800 \
  --screenshot="$PWD/docs/preview.png" "file://$scratch/page.html" >/dev/null 2>&1
ls -l docs/preview.png
