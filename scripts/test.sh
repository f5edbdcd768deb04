#!/bin/sh
# SPDX-License-Identifier: MIT
# Sets up, builds and runs every test: native, under the sanitizers, and for Windows under Wine.
set -eu
cd "$(dirname "$0")/.."
scripts/setup.sh

for preset in native asan windows; do
  echo "== $preset"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset"
done
