#!/bin/sh
# SPDX-License-Identifier: MIT
# Has imsc, a renderer of TTML, show what txsub writes. Skips (77) where the tools are not at hand.
#   render_ttml_test.sh TXSUB DIRECTORY [--screenshots]
set -eu
txsub=$1
directory=$2
screenshots=${3:-}

skip() {
  echo "skipped: $1"
  exit 77
}

for tool in node chromium; do
  command -v "$tool" >/dev/null || skip "$tool is not installed"
done
imsc=tests/tools/node_modules/imsc/dist/imsc.all.min.js
[ -f "$imsc" ] || skip "scripts/setup.sh has not installed imsc"
mkdir -p "$directory"

add() { # NAME INPUT [OPTION...]
  name=$1
  shift
  "$txsub" convert "$@" --quiet -o "$directory/$name.ttml"
  documents="$documents $directory/$name.ttml"
}
documents=""
add captions samples/captions.scc
add captions-ebu samples/captions.scc --ebu-tt
if [ -e samples/teletext.ts ]; then
  add teletext samples/teletext.ts
  add teletext-ebu samples/teletext.ts --ebu-tt
fi
if [ -e samples/dvb.ts ]; then
  add dvb-embedded samples/dvb.ts
  add dvb-files samples/dvb.ts --images files
fi
capture=${TESSARY_CAPTURES:-}/sample_TS_with_graphics.ts
if [ -e "$capture" ]; then
  add capture-embedded "$capture"
  add capture-files "$capture" --images files
fi
# shellcheck disable=SC2086  # one word per document
node tests/tools/render_ttml.mjs "$imsc" $screenshots $documents
