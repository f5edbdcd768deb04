#!/bin/sh
# SPDX-License-Identifier: MIT
# What the tests do not see: the format, what clang-tidy says of what changed, Clang's warnings, and a
# short run of every fuzz target. The base of the change is TESSARY_BASE, or the commit before.
set -eu
cd "$(dirname "$0")/.."
scripts/setup.sh

echo "== format"
# Compared by content: --dry-run reports what it would not change.
git ls-files '*.h' '*.cpp' | while read -r file; do
  clang-format-14 "$file" | cmp -s - "$file" || {
    echo "$file is not formatted: clang-format-14 -i $file" >&2
    exit 1
  }
done

echo "== clang"
cmake --preset clang >/dev/null
cmake --build --preset clang

# Windows sources have no commands in this build.
echo "== clang-tidy"
changed=$(git diff --name-only --diff-filter=d "${TESSARY_BASE:-HEAD~1}" -- '*.cpp' 2>/dev/null || true)
for file in $changed; do
  grep -q "/$file\"" build/clang/compile_commands.json || continue
  clang-tidy-14 -p build/clang --quiet --warnings-as-errors='*' "$file" 2>/dev/null
done

echo "== fuzz"
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz
for target in build/fuzz/bin/*_fuzz; do
  echo "$(basename "$target")"
  corpus=$(mktemp -d)
  "$target" -max_total_time="${TESSARY_FUZZ_SECONDS:-20}" -rss_limit_mb=2048 "$corpus" >"$corpus.log" 2>&1 || {
    tail -n 40 "$corpus.log" >&2
    exit 1
  }
  rm -rf "$corpus" "$corpus.log"
done
