#!/bin/bash
# Measures the filter in a graph under Wine against the conversion chain alone on the same samples, in
# turn, and prints the ratios of the best times; the results are compared too.
#   bench/filter.sh [RECORDING PAGE]
# Without arguments: the dense teletext that bench/run.sh makes, 65,525 samples.
#
# Every side has read the recording beforehand and collects what comes out in memory: the clock runs
# from the first sample pushed to the end of the stream. The chain runs natively, and under Wine as the
# module has it, with Wine's heap.
#
# The chain passes over most of dense teletext at the speed of a copy, so this shows what a graph
# costs at most: each sample is copied into a buffer, queued, and taken by another thread. Measured
# here: chain 0.028 s, under Wine 0.032 s; graph 0.036 to 0.041 s, 1.3 to 1.45 times the native chain
# and 1.1 to 1.2 times the same chain under Wine, 0.13 to 0.2 us more per sample, where a live stream
# brings 25 samples a second. Receive takes 0.1 to 0.2 us in the median. Other work on the two
# processors makes single runs two to three times as long.
set -eu
cd "$(dirname "$0")/.."
root=$PWD
if [ $# -eq 0 ]; then
  mkdir -p build/bench-inputs
  build/native/bin/make_inputs build/bench-inputs
fi
recording=${1:-build/bench-inputs/teletext-dense.ts}
page=${2:-888}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export WINEPREFIX=$PWD/build/windows/wine WINEDEBUG=-all WINEDLLOVERRIDES=mscoree,mshtml=

native=$root/build/native/bin
windows=$root/build/windows/bin
"$native/txsub" extract -q "$recording" -o "$scratch/samples.jsonl"
cd "$scratch"
for _ in 1 2 3 4 5 6 7 8 9 10; do
  "$native/chain_replay" samples.jsonl "$page" native.jsonl >>native.times
  /usr/lib/wine/wine64 "$windows/chain_replay.exe" samples.jsonl "$page" wine.jsonl 2>/dev/null |
    tr -d '\r' >>wine.times
  /usr/lib/wine/wine64 "$windows/txgraph.exe" samples.jsonl \
    --module "Z:$windows/TXSubtitleConverter.ax" --mode webvtt --page "$page" --stats \
    -o graph.jsonl 2>&1 | grep '^txgraph' | tee -a graph.log
  cmp native.jsonl wine.jsonl
  cmp native.jsonl graph.jsonl
done
best() { sort -n "$1" | head -1; }
sed -E 's/.* out, ([0-9.]+) s .*/\1/' graph.log >graph.times
awk -v native="$(best native.times)" -v wine="$(best wine.times)" -v graph="$(best graph.times)" \
    -v samples="$(($(wc -l <samples.jsonl) - 1))" 'BEGIN {
  printf "chain alone: native %s s, under Wine %s s; graph %s s\n", native, wine, graph
  printf "graph: %.2f times the native chain, %.2f times the chain under Wine, %.2f us more per sample\n",
         graph / native, graph / wine, (graph - native) / samples * 1e6
}'
