#!/bin/bash
# SPDX-License-Identifier: MIT
# Runs the commands that the documentation shows, on samples under the names that it uses.
#   docs_commands_test.sh TXSUB
set -eu
root=$(cd "$(dirname "$0")/../.." && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir -p "$scratch/bin" "$scratch/video"
ln -s "$1" "$scratch/bin/txsub"
PATH=$scratch/bin:$PATH

# As the recordings of the texts: captions, DVB pictures, teletext of many languages.
prepare() {
  cp "$root/samples/captions.ts" news.ts
  cp "$root/samples/captions.ts" live.ts
  cp "$root/samples/dvb.ts" film.ts
  cp "$root/samples/teletext.ts" mux.ts
  printf 'news.ts\nmux.ts\n' >list.txt
  printf '{"input": "news.ts", "output": "out/news.vtt"}\n' >list.jsonl
  mkdir -p video
  printf '#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=2000000\nvideo.m3u8\n' >video/master.m3u8
}

# Lines of code blocks that run the program, without what stands beside them.
commands() { # PAGE
  awk '/^```/ { inside = !inside; next } inside' "$1" |
    grep -E '^(cat [a-z.]+ \| )?txsub ' | sed -E "s/  +.*//; s/ +#.*//"
}

cd "$scratch"
count=0
for page in README.md docs/convert.md docs/ocr.md docs/archives.md docs/streaming.md; do
  while IFS= read -r command; do
    case $command in
      *://* | *--follow* | */archive* | *report.jsonl* | *deu*) continue ;;  # needs what is not here
    esac
    rm -rf work && mkdir work && (
      cd work
      prepare
      status=0
      timeout 60 bash -c "$command" >../out 2>&1 </dev/null || status=$?
      [ "$status" = 0 ] || [ "$status" = 3 ] || {
        echo "$page: '$command' ends with $status:"
        tail -n 5 ../out
        exit 1
      }
    )
    count=$((count + 1))
  done < <(commands "$root/$page")
done
[ "$count" -gt 20 ] || {
  echo "only $count commands were found in the documentation"
  exit 1
}
echo "$count commands of the documentation work"
