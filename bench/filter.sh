#!/bin/bash
# Measures the filter in a graph under Wine against the native chain on the same samples, five times in
# turn, and prints the ratio of the best times; the results are compared too.
#   bench/filter.sh [RECORDING PAGE]
#
# Both sides have read the recording beforehand and collect what comes out in memory: the clock runs
# from the first sample pushed to the end of the stream.
#
# Every sample costs the graph a release of the queue's semaphore and a wait for it, both round trips to
# Wine's server, and a change of threads. Teletext of 20 Mbyte with a hundred pages is 13,101 samples:
# 0.006 s natively, where most rows are passed over at the speed of a copy; 0.45 to 0.50 s in the graph,
# some 75 times as long, or 35 us more per sample, where a live stream brings 25 samples a second. Receive
# takes 9 to 19 us in the median; 30 us where other work leaves Wine's server no core.
set -eu
cd "$(dirname "$0")/.."
root=$PWD
recording=${1:-samples/teletext.ts}
page=${2:-888}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export WINEPREFIX=$PWD/build/windows/wine WINEDEBUG=-all WINEDLLOVERRIDES=mscoree,mshtml=

native=$root/build/native/bin
windows=$root/build/windows/bin
"$native/txsub" extract -q "$recording" -o "$scratch/samples.jsonl"
cd "$scratch"
for _ in 1 2 3 4 5; do
  "$native/chain_replay" samples.jsonl "$page" native.jsonl | tee -a chain.times
  /usr/lib/wine/wine64 "$windows/txgraph.exe" samples.jsonl \
    --module "Z:$windows/TXSubtitleConverter.ax" --mode webvtt --page "$page" --stats \
    -o graph.jsonl 2>&1 | tee -a graph.log
  cmp native.jsonl graph.jsonl
done
sed -E 's/.* out, ([0-9.]+) s .*/\1/' graph.log | sort -n | head -1 >graph.best
sort -n chain.times | head -1 | paste - graph.best |
  awk -v samples="$(($(wc -l <samples.jsonl) - 1))" '{
    printf "native chain %s s, graph %s s: %.1f times, %.1f us more per sample\n",
           $1, $2, $2 / $1, ($2 - $1) / samples * 1e6
  }'
