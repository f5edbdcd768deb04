#!/bin/sh
# SPDX-License-Identifier: MIT
# Installs the library into a folder of its own, builds and runs the examples against it, and compares its
# binary interface with that of its first version.
set -eu
cmake=$1
build=$2
root=$(cd "$(dirname "$0")/../.." && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() {
  echo "library_install_test: $1" >&2
  exit 1
}

for component in program library headers python; do
  "$cmake" --install "$build" --prefix "$scratch/usr" --component "$component" >>"$scratch/log" ||
    fail "cmake --install failed: $(cat "$scratch/log")"
done
libraries=$(dirname "$(find "$scratch/usr" -name libtxsub.so)")
export LD_LIBRARY_PATH="$libraries"
sample=$root/samples/captions.ts

prefix="--define-variable=prefix=$scratch/usr"
PKG_CONFIG_PATH=$libraries/pkgconfig cc -std=c99 -Wall -Wextra -Wpedantic -Werror "$root/examples/library/cues.c" \
  $(PKG_CONFIG_PATH=$libraries/pkgconfig pkg-config "$prefix" --cflags --libs txsub) -o "$scratch/cues_c"
"$scratch/cues_c" "$sample" CC1 >"$scratch/c.txt"
grep -q "CC1 1.068 4.638" "$scratch/c.txt" || fail "the C example says: $(head -3 "$scratch/c.txt")"

"$cmake" -S "$root/examples/library" -B "$scratch/build" -DCMAKE_PREFIX_PATH="$scratch/usr" >"$scratch/log"
"$cmake" --build "$scratch/build" >"$scratch/log" 2>&1 || fail "$(cat "$scratch/log")"
"$scratch/build/cues" CC1 "$scratch/cues.vtt" <"$sample"
"$scratch/usr/bin/txsub" convert -q --page CC1 "$sample" -o "$scratch/program.vtt"
cmp "$scratch/cues.vtt" "$scratch/program.vtt" || fail "library and program write different files"

python=$scratch/usr/lib/python3/dist-packages
if [ -d "$python" ]; then
  PYTHONPATH=$python /usr/bin/python3 "$root/examples/library/cues.py" "$root/samples/teletext.ts" deu \
    >"$scratch/python.txt"
  grep -q "Guten Abend aus dem Hafen" "$scratch/python.txt" || fail "Python says: $(cat "$scratch/python.txt")"
  PYTHONPATH=$python /usr/bin/python3 "$root/tests/library/test_python.py" "$root/samples" "$scratch" ||
    fail "Python's tests fail"
else
  echo "skipped: Python's module was not built (pybind11-dev)"
fi

if command -v abidiff >/dev/null; then
  "$root/library/dump_abi.sh" "$libraries/libtxsub.so" >"$scratch/now.abi"
  abidiff --no-added-syms "$root/library/libtxsub-1.abi" "$scratch/now.abi" || fail "the binary interface has changed"
else
  echo "skipped: abidiff is not installed"
fi
