#!/bin/bash
# SPDX-License-Identifier: MIT
# Measures whole files: seconds of txsub from the page cache, and the ratio to `cat` of the same file
# in the same run, one core, best of five. Inputs are made once, in build/bench-inputs (1.5 GB). For
# pictures, the ratio to what ffmpeg takes to decode them and encode them again, where it is installed.
set -eu
cd "$(dirname "$0")/.."

build=build/native/bin
inputs=build/bench-inputs
cmake --preset native >/dev/null
cmake --build --preset native --target txsub make_inputs measure >/dev/null
$build/make_inputs "$inputs"

best() {
  for _ in 1 2 3 4 5; do taskset -c 0 $build/measure "$@"; done | sort -n | head -1
}

printf '%-24s %8s %8s %8s %8s %10s %8s %13s\n' \
  file MB "cat s" "txsub s" GB/s "times cat" "peak MB" "times ffmpeg"
row() {  # FILE NAME [OPTION]...
  local file=$1 name=$2
  shift 2
  cat "$file" >/dev/null
  read -r cat_seconds _ < <(best cat "$file")
  mode=webvtt
  ffmpeg_seconds=0
  case $file in
  */dvb.ts)  # pictures
    mode=ttml
    if command -v ffmpeg >/dev/null; then
      read -r ffmpeg_seconds _ < <(best ffmpeg -v error -nostdin -threads 1 -i "$file" \
        -map 0:s -c:s dvbsub -f mpegts pipe:1)
    fi
    ;;
  esac
  read -r seconds peak < <(best $build/txsub convert --quiet --mode $mode "$@" "$file")
  bytes=$(stat -c %s "$file")
  awk -v name="$name" -v bytes="$bytes" -v cat="$cat_seconds" -v ours="$seconds" \
      -v peak="$peak" -v ffmpeg="$ffmpeg_seconds" 'BEGIN {
    printf "%-24s %8.0f %8.3f %8.3f %8.2f %10.1f %8.1f %13s\n",
           name, bytes / 1e6, cat, ours, bytes / 1e9 / ours, ours / cat, peak,
           ffmpeg > 0 ? sprintf("%.2f", ours / ffmpeg) : "-"
  }'
}

for file in "$inputs"/*.ts; do
  row "$file" "$(basename "$file")"
  case $file in
  */captions-digital.ts) row "$file" "  the same, service S1" --page S1 ;;
  esac
done
