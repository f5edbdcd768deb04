#!/bin/sh
# SPDX-License-Identifier: MIT
# Converts recordings with the native program: what the filter has to deliver, too.
#   make_references.sh TXSUB OUTPUT-DIRECTORY
# Writes OUTPUT-DIRECTORY/cases.txt, a line each: a recording of samples, the number of its reference
# (N.jsonl what is delivered, N.errors what is said), and the options. Exits with 77 when the native
# program has not been built.
set -eu
txsub=$1
output=$2
[ -x "$txsub" ] || exit 77
samples=$(dirname "$0")/../../samples
rm -rf "$output"
mkdir -p "$output"

number=0
# convert RECORDING OPTION...: one case
convert() {
  recording=$1
  shift
  number=$((number + 1))
  "$txsub" convert "$output/$recording" -q "$@" -o "$output/$number.jsonl" 2>"$output/$number.errors"
  echo "$recording $number $*" >>"$output/cases.txt"
}

# record FILE PAGE...: every mode and some durations, for each page
record() {
  file=$1
  shift
  [ -f "$file" ] || return 0
  recording=$(basename "$file").recorded.jsonl
  "$txsub" extract -q "$file" -o "$output/$recording"
  for page in "$@"; do
    for mode in ttml webvtt srt; do
      for duration in 0 700 2000; do
        convert "$recording" --mode $mode --page "$page" --duration $duration
      done
    done
  done
}

record "$samples/captions.ts" 1 2
record "$samples/captions-mpeg2.ts" 3
record "$samples/captions.scc" 1
record "$samples/teletext.ts" 888 488
record "$samples/dvb.ts" 1
convert captions.ts.recorded.jsonl --mode ttml --page 1 --ebu-tt
convert teletext.ts.recorded.jsonl --mode webvtt --language dan
convert teletext.ts.recorded.jsonl --mode webvtt --language deu --hearing-impaired

if [ -n "${TESSARY_CAPTURES:-}" ]; then
  record "$TESSARY_CAPTURES/sintel-captions.ts" 1
  record "$TESSARY_CAPTURES/sample_TS_with_teletext.ts" 150 799
  record "$TESSARY_CAPTURES/sample_TS_with_graphics.ts" 1
  record "$TESSARY_CAPTURES/sample_TS_dvbsub_at_video_start.ts" 1
fi
