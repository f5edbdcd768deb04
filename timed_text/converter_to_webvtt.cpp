// SPDX-License-Identifier: MIT
#include "timed_text/converter_to_webvtt.h"

#include <algorithm>
#include <string>

#include "util/exception.h"

namespace korr::encoding::subtitling::ttml::inline v2_1 {
namespace {

// Each run is a line of its own, without its first cell: that of the code that opened it.
void write(ByteBuffer& out, const TeletextText& text) {
  if (text.rows.empty()) return;

  constexpr std::int32_t kLastRow = 24;
  std::int32_t line = 100;  // percent of the height
  for (const auto& row : text.rows) line = std::min(line, row.number * 100 / kLastRow);
  append(out, "line:" + std::to_string(line) + "%\n");

  for (const auto& row : text.rows) {
    for (const auto& run : row.runs) {
      if (run.glyphs.empty()) continue;
      for (std::size_t cell = 1; cell < run.glyphs.size(); ++cell)
        append(out, run.glyphs[cell].view());
      append(out, "\n");
    }
  }
}

void writeRun(ByteBuffer& out, const CaptionText::TextRun& run) {
  if (run.underline) append(out, "<u>");
  if (run.italic) append(out, "<i>");
  for (const auto& glyph : run.glyphs) append(out, glyph.view());
  if (run.italic) append(out, "</i>");
  if (run.underline) append(out, "</u>");
}

// Each row is a line; a screen whose rows wrote nothing gives nothing.
void write(ByteBuffer& out, const CaptionText& text) {
  append(out, "line:100%\n");
  bool hasText = false;
  for (const auto& row : text.rows) {
    const std::size_t before = out.size();
    for (const auto& run : row.runs) writeRun(out, run);
    hasText |= out.size() != before;
    append(out, "\n");
  }
  if (!hasText) out.clear();
}

}  // namespace

void ConverterToWebVtt::convert(ByteBuffer& out, MediaTime time) {
  out.clear();
  const Subtitle subtitle = container_.currentSubtitle(time);
  switch (subtitle.kind()) {
    case SubtitleKind::TeletextText:
      return write(out, *subtitle.teletextText());
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
