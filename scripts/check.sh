#!/bin/sh
# SPDX-License-Identifier: MIT
# What the tests do not see: the format and the license line of every file, Clang's warnings, what
# clang-tidy says of what changed, and a short run of every fuzz target. The base of the change is
# TESSARY_BASE, or the commit before.
set -eu
cd "$(dirname "$0")/.."
scripts/setup.sh
jobs=$(nproc)

echo "== format"
# Compared by content: --dry-run reports what it would not change.
git ls-files '*.h' '*.cpp' | xargs -P "$jobs" -n 25 sh -c '
  for file; do
    clang-format-14 "$file" | cmp -s - "$file" || {
      echo "$file is not formatted: clang-format-14 -i $file" >&2
      exit 255
    }
  done' sh

echo "== licenses"
reuse lint >/dev/null || reuse lint
unnamed=$(git ls-files '*.h' '*.cpp' '*.sh' '*.cmake' '*CMakeLists.txt' |
  xargs grep -L "^\(//\|#\|/\*\) SPDX-License"'-Identifier: ' || true)
[ -z "$unnamed" ] || {
  echo "these lack the line that names their license, as the first of other files:" >&2
  echo "$unnamed" >&2
  exit 1
}

echo "== clang"
cmake --preset asan >/dev/null
cmake --build --preset asan

# Windows sources have no commands in this build.
echo "== clang-tidy"
git diff --name-only --diff-filter=d "${TESSARY_BASE:-HEAD~1}" -- '*.cpp' | while read -r file; do
  ! grep -qs "/$file\"" build/asan/compile_commands.json build/asan/*/CMakeFiles/*/Unity/*.cxx ||
    echo "$file"
done | xargs -r -P "$jobs" -n 1 clang-tidy-14 -p build/asan --quiet --warnings-as-errors='*'

echo "== fuzz"
find build/asan/bin -name '*_fuzz' | xargs -P "$jobs" -n 1 sh -c '
  corpus=$(mktemp -d)
  "$1" -max_total_time="${TESSARY_FUZZ_SECONDS:-20}" -rss_limit_mb=2048 -artifact_prefix="$1-" \
    "$corpus" >"$corpus.log" 2>&1 || {
    tail -n 40 "$corpus.log" >&2
    exit 255
  }
  echo "$(basename "$1")"
  rm -rf "$corpus" "$corpus.log"' sh
