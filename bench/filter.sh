#!/bin/bash
# Measures the filter in a graph under Wine against the native program on the same samples, five times
# in turn: how long Receive takes while the worker is busy, and how long all samples take.
#   bench/filter.sh [RECORDING PAGE]
#
# Every sample costs the graph some round trips to Wine's server (the queue's semaphore and those of
# both allocators, about 10 us each), so that streams of small samples show Wine, not the filter.
# Measured on a busy machine, teletext of 20 Mbyte with a hundred pages: Receive median 17 to 18 us, all
# samples 2.4 times as long as natively.
set -eu
cd "$(dirname "$0")/.."
root=$PWD
recording=${1:-samples/teletext.ts}
page=${2:-888}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export WINEPREFIX=$PWD/build/windows/wine WINEDEBUG=-all WINEDLLOVERRIDES=mscoree,mshtml=

build/native/bin/txsub extract -q "$recording" -o "$scratch/samples.jsonl"
cd "$scratch"
bin=$root/build/windows/bin
for _ in 1 2 3 4 5; do
  "$root/build/native/bin/measure" "$root/build/native/bin/txsub" convert --quiet samples.jsonl \
    --mode webvtt --page "$page" -o native.jsonl | awk '{ print "native program " $1 " s" }'
  /usr/lib/wine/wine64 "$bin/txgraph.exe" samples.jsonl --module "Z:$bin/TXSubtitleConverter.ax" \
    --mode webvtt --page "$page" --stats -o graph.jsonl
  cmp native.jsonl graph.jsonl
done
