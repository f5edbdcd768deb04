#!/bin/bash
# SPDX-License-Identifier: MIT
# How well letters in pictures are read: a table by language and font beside Tesseract alone.
#
#   bench/recognition.sh [PICTURES] [LANGUAGE...]    pictures of each row, 40 unless told; rows
#                                                    of these languages only
#
# FONTS names a folder of fonts that are not installed. CUES=1 prints every cue to standard error, with
# its confidence.
#
# Makes subtitles with known letters (recognition_truth.py), draws them with libass through ffmpeg,
# sends them through a DVB encoder and our decoder, and reads them. Needs the fonts and the data of
# the languages: see the rows at the end.
set -eu
cd "$(dirname "$0")/.."
count=${1:-40}
only=" ${*:2} "
work=build/recognition
export OMP_THREAD_LIMIT=1
[ -e $work/ara.txt ] || python3 bench/recognition_truth.py $work >/dev/null

# LANGUAGE FONT STYLE SIZE ENCODER
row() {
  local language=$1 font=$2 style=$3 size=$4 encoder=$5
  [ "$only" = "  " ] || [[ "$only" = *" $language "* ]] || return 0
  local width=720 height=576 letters=38 outline=2 border=1 italic=0 shadow=0 edge='&H00000000' base=1
  if [ "$size" = hd ]; then width=1920 height=1080 letters=70 outline=3; fi
  case $style in
    plain) outline=0 ;;
    boxed) border=3 edge='&H60000000' outline=6 ;;
    italic) italic=-1 ;;
    shadow) shadow=2 ;;
  esac
  case $language in heb | ara) base=-1 ;; esac
  head -n "$count" $work/"$language".txt >$work/truth.txt
  {
    cat <<END
[Script Info]
ScriptType: v4.00+
PlayResX: $width
PlayResY: $height
WrapStyle: 2
ScaledBorderAndShadow: yes

[V4+ Styles]
Format: Name, Fontname, Fontsize, PrimaryColour, SecondaryColour, OutlineColour, BackColour, Bold, Italic, Underline, StrikeOut, ScaleX, ScaleY, Spacing, Angle, BorderStyle, Outline, Shadow, Alignment, MarginL, MarginR, MarginV, Encoding
Style: Default,$font,$letters,&H00FFFFFF,&H00FFFFFF,$edge,&H80000000,0,$italic,0,0,100,100,0,0,$border,$outline,$shadow,2,10,10,30,$base

[Events]
Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text
END
    awk -v style="$style" '
      function time(i) { return sprintf("%d:%02d:%02d.00", i / 3600, int(i / 60) % 60, i % 60) }
      { text = $0
        if (style == "two") sub(/\|/, "\\N{\\c\\&H00FFFF\\&}", text); else gsub(/\|/, "\\N", text)
        printf "Dialogue: 0,%s,%s,Default,,0,0,0,,%s\n", time(NR - 1), time(NR), text }' $work/truth.txt
  } >$work/truth.ass
  ffmpeg -v error -nostdin -f lavfi \
    -i "color=c=black@0:s=${width}x$height:r=1:d=$count,format=rgba" \
    -vf "ass=f=$work/truth.ass:alpha=1${FONTS:+:fontsdir=$FONTS}" -f rawvideo -pix_fmt rgba pipe: 2>/dev/null |
    build/native/bin/recognition_bench "$language" $width $height "$encoder" $work/truth.txt \
      --style="$style" ${CUES:+--cues} ${ALONE---alone} |
    awk -v name="$language | $font | $style | $size | $encoder" -F'\t' '
      { printf "| %s | %d | %d | %.3f | %.3f | %d | %d | %d of %d | %s |\n", name, $1, $2, $3 * 100 / $2,
               $4 * 100 / $2, $5, $6, $8 - $9, $8, $13 }'
}

echo "| language | font | style | size | encoder | pictures | letters | CER % | Tesseract alone % | wrong cues | flagged | colour and slant right | ms a picture |"
echo "|---|---|---|---|---|---|---|---|---|---|---|---|---|"
row eng "Liberation Serif" outlined sd own4
row deu "Noto Sans" boxed sd own16
row fra "Lato" plain sd own256
row pol "Carlito" two hd own16
row tur "Linux Libertine O" italic hd ffmpeg
row ell "FreeSans" shadow sd ffmpeg
row spa "Tiresias Infofont" outlined hd own4
row swe "DejaVu Serif" two sd own4
row rus "Open Sans" italic sd own4
row ces "Roboto" boxed hd own16
row heb "DejaVu Sans" plain hd ffmpeg
row ara "Noto Sans Arabic" outlined hd own16
