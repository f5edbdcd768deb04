#!/bin/sh
# Sets up, builds and runs every test: native and under the sanitizers.
set -eu
cd "$(dirname "$0")/.."
scripts/setup.sh

for preset in native asan; do
  echo "== $preset"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset"
done
