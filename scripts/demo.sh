#!/bin/sh
# SPDX-License-Identifier: MIT
# From a fresh clone to subtitles on the screen: sets up, builds the program and converts samples.
set -eu
cd "$(dirname "$0")/.."
scripts/setup.sh build

log=build/demo.log
mkdir -p build
echo "Building (log: $log) ..."
if ! { cmake --preset native && cmake --build --preset native --target txsub; } >"$log" 2>&1; then
  tail -n 30 "$log" >&2
  exit 1
fi

show() {
  echo
  echo "\$ $*"
  "$@"
}

PATH="$PWD/build/native/bin:$PATH"
for sample in samples/captions.ts samples/teletext.ts; do
  [ -e "$sample" ] || continue
  show txsub probe "$sample"
  show txsub convert "$sample"
done

# Pictures are read: letters, lines and colours.
show txsub convert samples/dvb.ts --mode srt
