#!/bin/sh
# SPDX-License-Identifier: MIT
# Has txsub read what ffmpeg sends over the loopback, by every protocol, and compares it with the same
# recording from a file. Skips (77) where ffmpeg is not at hand.
#   network_test.sh TXSUB DIRECTORY
set -eu
txsub=$1
directory=$2
command -v ffmpeg >/dev/null || { echo "skipped: ffmpeg is not installed"; exit 77; }
rm -rf "$directory"
mkdir -p "$directory"

send() { ffmpeg -nostdin -v error -readrate 5 -i samples/teletext.ts -map 0 -c copy "$@" >/dev/null; }
receive() { timeout 60 "$txsub" convert --quiet "$2" --page 888 -o "$directory/$1.vtt"; }

ffmpeg -nostdin -v error -i samples/teletext.ts -map 0 -c copy "$directory/file.ts"
receive file "$directory/file.ts"

# Ports that differ from run to run.
port=$((20000 + $$ % 10000))
receive udp "udp://127.0.0.1:$port" &
receive rtp "rtp://127.0.0.1:$((port + 2))" &
receive srt "srt://127.0.0.1:$((port + 5))?mode=listener" &
send -f mpegts -listen 1 "http://127.0.0.1:$((port + 6))" &
sleep 1
send -f mpegts "udp://127.0.0.1:$port?pkt_size=1316" &
send -f rtp_mpegts "rtp://127.0.0.1:$((port + 2))" &
send -f mpegts "srt://127.0.0.1:$((port + 5))" &
receive http "http://127.0.0.1:$((port + 6))" &
wait

for protocol in udp rtp srt http; do
  cmp "$directory/file.vtt" "$directory/$protocol.vtt" || exit 1
done
echo "udp, rtp, srt and http: the cues of the file"
