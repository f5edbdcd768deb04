#!/bin/bash
# SPDX-License-Identifier: MIT
# The library beside the program, on the inputs of bench/run.sh: processor time, best of seven, and the
# ratio to `txsub convert` in the same run; and a batch in two processes beside one.
set -eu
cd "$(dirname "$0")/.."

build=$PWD/build/native
inputs=build/bench-inputs
cmake --preset native >/dev/null
cmake --build --preset native --target txsub make_inputs txsub_library txsub_python >/dev/null
[ -e "$inputs/captions-mux.ts" ] || "$build/bin/make_inputs" "$inputs"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cc -O2 -Ilibrary/include examples/library/cues.c -L"$build/bin" -ltxsub -o "$scratch/cues"
export LD_LIBRARY_PATH=$build/bin PYTHONPATH=$build/python
echo 'import sys, txsub
for cue in txsub.open(sys.argv[1], page=sys.argv[2]): cue.start, cue.text' >"$scratch/cues.py"

# Seconds of processor time.
once() {
  local TIMEFORMAT='%U %S'
  { time taskset -c 0 "$@" >/dev/null 2>&1; } 2>&1 | awk '{ print $1 + $2 }'
}

row() { # FILE PAGE
  local program=() library=() python=()
  cat "$1" >/dev/null
  for _ in 1 2 3 4 5 6 7; do  # side by side, so that what else the machine does meets all alike
    program+=("$(once "$build/bin/txsub" convert --quiet --page "$2" "$1")")
    library+=("$(once "$scratch/cues" "$1" "$2")")
    python+=("$(once /usr/bin/python3 "$scratch/cues.py" "$1" "$2")")
  done
  least() { printf '%s\n' "$@" | sort -n | head -1; }
  awk -v name="$(basename "$1")" -v program="$(least "${program[@]}")" \
      -v library="$(least "${library[@]}")" -v python="$(least "${python[@]}")" 'BEGIN {
    printf "%-24s %9.3f %12.2f %11.2f\n", name, program, library / program, python / program
  }'
}
printf '%-24s %9s %12s %11s\n' file "txsub s" "C, times" "Python, times"
row "$inputs/captions-dense.ts" CC1
row "$inputs/captions-mux.ts" CC1

mkdir "$scratch/recordings"
for i in $(seq 12); do ln -s "$PWD/$inputs/dvb.ts" "$scratch/recordings/$i.ts"; done
ls "$scratch"/recordings/*.ts >"$scratch/list"
seconds() { # JOBS
  local TIMEFORMAT=%R
  rm -rf "$scratch/out" "$scratch/list.results.jsonl"
  { time "$build/bin/txsub" batch --quiet --jobs "$1" "$scratch/list" -o "$scratch/out/\${input}.ttml"; } 2>&1
}
seconds 2 >/dev/null
one=$(seconds 1)
two=$(seconds 2)
awk -v one="$one" -v two="$two" \
  'BEGIN { printf "batch of 12: %.2f s, one at a time; %.2f s, two at a time: %.2f times as fast\n", one, two, one / two }'
