#!/bin/bash
# SPDX-License-Identifier: MIT
# What comes out, and how fast, beside ffmpeg: the table of the README. Times are processor time, best of
# five, side by side; only their ratio is printed. Inputs are those of bench/run.sh and the samples.
set -eu
cd "$(dirname "$0")/.."

txsub=build/native/bin/txsub
inputs=build/bench-inputs
cmake --preset native >/dev/null
cmake --build --preset native --target txsub make_inputs >/dev/null
[ -e "$inputs/dvb.ts" ] || build/native/bin/make_inputs "$inputs"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
for _ in $(seq 50); do cat samples/captions.ts; done >"$scratch/captions.ts"

once() {
  local TIMEFORMAT='%U %S'
  { time "$@" >/dev/null 2>&1; } 2>&1 | awk '{ print $1 + $2 }'
}
cues() { grep -c -e ' --> ' || true; }
# Cues that last for more than an hour: their end is not known.
endless() { awk '/ --> / { split($1, a, ":"); split($3, b, ":"); n += b[1] > a[1] } END { print n + 0 }'; }

row() { # NAME INPUT OURS THEIRS TIMED-OURS TIMED-THEIRS
  local ours theirs best_ours=() best_theirs=()
  ours=$(bash -c "$3" 2>/dev/null)
  theirs=$(bash -c "$4" 2>/dev/null || true)
  for _ in 1 2 3 4 5; do
    best_ours+=("$(once bash -c "$5")")
    best_theirs+=("$(once bash -c "$6")")
  done
  least() { printf '%s\n' "$@" | sort -n | head -1; }
  printf '| %s | %s | %s, %s of them without an end | %s |\n' "$1" "$(cues <<<"$ours")" "$(cues <<<"$theirs")" \
    "$(endless <<<"$theirs")" \
    "$(awk -v a="$(least "${best_theirs[@]}")" -v b="$(least "${best_ours[@]}")" 'BEGIN { printf "%.1f", a / b }')"
}

quiet="ffmpeg -v error -nostdin -threads 1"
echo '| recording | cues from txsub | cues from ffmpeg | times as fast |'
echo '|---|---|---|---|'
movie="-f lavfi -i movie=FILE[out0+subcc] -map 0:s -f srt -"
row "captions, CC1" captions \
  "$txsub convert -q --page CC1 --mode srt samples/captions.ts" "$quiet ${movie/FILE/samples/captions.ts}" \
  "$txsub convert -q --page CC1 --mode srt $scratch/captions.ts" "$quiet ${movie/FILE/$scratch/captions.ts}"
row "captions, CC3" captions \
  "$txsub convert -q --page CC3 --mode srt samples/captions.ts" "$quiet -real_time 0 -data_field 1 ${movie/FILE/samples/captions.ts}" \
  "$txsub convert -q --page CC3 --mode srt $scratch/captions.ts" "$quiet ${movie/FILE/$scratch/captions.ts}"
row "teletext, page 888" teletext \
  "$txsub convert -q --page 888 --mode srt samples/teletext.ts" \
  "$quiet -txt_format text -txt_page 888 -i samples/teletext.ts -map 0:s:0 -f srt -" \
  "$txsub convert -q --mode srt $inputs/teletext-dense.ts" \
  "$quiet -txt_format text -i $inputs/teletext-dense.ts -map 0:s:0 -f srt -"
row "DVB subtitles, as text" dvb \
  "$txsub convert -q --mode srt --ocr eng samples/dvb.ts" "$quiet -i samples/dvb.ts -map 0:s:0 -f srt -" \
  "$txsub convert -q --mode ttml $inputs/dvb.ts" \
  "$quiet -i $inputs/dvb.ts -map 0:s -c:s dvbsub -f mpegts -"
