// SPDX-License-Identifier: MIT
#include "timed_text/converter_to_youtube_srt.h"

#include "util/exception.h"

namespace korr::encoding::subtitling::ttml::inline v2_1 {
namespace {

void write(ByteBuffer& out, const CaptionText& text) {
  for (const auto& row : text.rows) {
    for (const auto& run : row.runs) {
      for (const auto& glyph : run.glyphs) append(out, glyph.view());
    }
    append(out, "<br>");
  }
}

}  // namespace

void ConverterToYoutubeSrt::convert(ByteBuffer& out, MediaTime time) {
  out.clear();
  const Subtitle subtitle = container_.currentSubtitle(time);
  switch (subtitle.kind()) {
    case SubtitleKind::TeletextText:
      throw util::TessaryException("Unexpected input subtitle type");
    case SubtitleKind::CaptionText:
      return write(out, *subtitle.captionText());
    case SubtitleKind::Bitmap:
      throw util::TessaryException("Unexpected subtitle type");
    case SubtitleKind::WindowText:  // no chain makes these
    case SubtitleKind::PlacedText:
      break;
  }
  throw util::TessaryException("internal assertion failure");
}

}  // namespace korr::encoding::subtitling::ttml::inline v2_1
