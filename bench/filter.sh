#!/bin/bash
# SPDX-License-Identifier: MIT
# Measures the filter in a graph under Wine against the conversion chain alone on the same samples, in
# turn and ten times each, and prints the ratios; the results are compared too.
#   bench/filter.sh [RECORDING PAGE]
# Without arguments: the dense teletext that bench/run.sh makes, 65,525 samples.
#
# Every side has read the recording beforehand and collects what comes out in memory: the clock runs
# from the first sample pushed to the end of the stream. The chain runs natively, and under Wine as the
# module has it, with Wine's heap.
#
# The chain passes over most of dense teletext at the speed of a copy, so this shows what a graph
# costs at most: each sample is copied into a buffer, queued, and taken by another thread. Measured
# here, best of ten: chain 0.0244 to 0.0253 s natively and under Wine, graph 0.0247 to 0.0259 s, 0.98
# to 1.05 times the native chain; Receive takes 0.1 us in the median. The median of the graph's times
# is 1.1 to 1.6 times the chain's: a sample takes seven cache lines or more from one thread to the
# other, and what that costs depends on where the system has put the two threads. Between the two
# processors of this virtual machine a line takes 30 ns where they share a cache and 170 ns where they
# do not, as they happen to be placed.
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
# The Nth of the ten times, in order.
nth() { sort -n "$2" | sed -n "$1p"; }
sed -E 's/.* out, ([0-9.]+) s .*/\1/' graph.log >graph.times
report() {
  awk -v what="$1" -v native="$(nth "$2" native.times)" -v wine="$(nth "$2" wine.times)" \
      -v graph="$(nth "$2" graph.times)" -v samples="$(($(wc -l <samples.jsonl) - 1))" 'BEGIN {
    printf "%s: chain %s s, under Wine %s s; graph %s s, %.2f times the native chain, %+.2f us a sample\n",
           what, native, wine, graph, graph / native, (graph - native) / samples * 1e6
  }'
}
report best 1
report "third best" 3
report median 5
