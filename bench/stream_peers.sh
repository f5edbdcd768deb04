#!/bin/bash
# SPDX-License-Identifier: MIT
# Makes WebVTT segments for HLS of one recording with txsub, ffmpeg and Shaka Packager (from npm, in the
# version that is named here), and compares what they show with the truth: stream_peers.sh [TXSUB]
set -eu
cd "$(dirname "$0")/.."
txsub=$(realpath "${1:-build/native/bin/txsub}")
work=build/stream-peers
page=888
rm -rf $work/out
mkdir -p $work/out/{txsub,ffmpeg,shaka}

if [ ! -d $work/node_modules/shaka-packager ]; then
  npm install --silent --no-audit --no-fund --prefix $work shaka-packager@3.4.2
fi
packager=$(realpath $work/node_modules/shaka-packager/bin/packager-linux-x64)
chmod +x "$packager"

ff() { ffmpeg -y -v error -nostdin "$@"; }
ff -f lavfi -i testsrc2=size=320x180:rate=25:duration=21 -c:v libx264 -preset ultrafast -g 25 \
  -pix_fmt yuv420p $work/source.mp4
ff -itsoffset 10 -i $work/source.mp4 -i samples/teletext.ts -copyts -map 0:v -map 1:s -c copy \
  -muxdelay 0 -muxpreload 0 -mpegts_copyts 1 -f mpegts $work/recording.ts

"$txsub" convert --quiet $work/recording.ts --page $page --absolute -o $work/truth.vtt
"$txsub" stream --quiet $work/recording.ts --page $page --segment 3 -o $work/out/txsub
ff -txt_format text -txt_page $page -copyts -i $work/recording.ts -map 0:v -map 0:s:0 -c:v copy \
  -c:s webvtt -f hls -hls_time 3 -hls_playlist_type vod -hls_segment_options mpegts_copyts=1 \
  -var_stream_map v:0,s:0,sgroup:subs $work/out/ffmpeg/v%v.m3u8
(cd $work/out/shaka && "$packager" \
  "in=../../recording.ts,stream=video,segment_template=v\$Number\$.ts,playlist_name=v.m3u8" \
  "in=../../recording.ts,stream=text,cc_index=$page,lang=fr,segment_template=w\$Number\$.vtt,playlist_name=w.m3u8" \
  --segment_duration 3 --hls_master_playlist_output master.m3u8 >log 2>&1)

python3 bench/stream_peers.py $work/truth.vtt \
  txsub "$(echo $work/out/txsub/*/webvtt.m3u8)" \
  ffmpeg $work/out/ffmpeg/v0_vtt.m3u8 \
  shaka-packager $work/out/shaka/w.m3u8
