// SPDX-License-Identifier: MIT

// Subtitles for tests, written as they look.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "cues/cue.h"
#include "model/subtitle.h"

namespace korr::txsub {

namespace model = encoding::subtitling;

using model::CaptionText;
using model::TeletextColour;
using model::TeletextSize;
using model::TeletextText;

inline std::vector<model::GlyphText> glyphs(std::string_view ascii) {
  return std::vector<model::GlyphText>(ascii.begin(), ascii.end());
}

inline CaptionText::TextRun captionRun(std::uint32_t column, std::string_view text) {
  CaptionText::TextRun run;
  run.column = column;
  run.glyphs = glyphs(text);
  return run;
}

inline CaptionText::TextRow captionRow(std::int32_t number,
                                       std::vector<CaptionText::TextRun> runs) {
  CaptionText::TextRow row;
  row.number = number;
  row.runs = std::move(runs);
  return row;
}

inline CaptionText::TextRow captionRow(std::int32_t number, std::uint32_t column,
                                       std::string_view text) {
  return captionRow(number, {captionRun(column, text)});
}

inline model::Subtitle captions(std::vector<CaptionText::TextRow> rows) {
  return model::Subtitle(CaptionText{std::move(rows)});
}

inline TeletextText::Run teletextRun(std::uint32_t column, std::string_view text,
                                     TeletextColour colour = TeletextColour::White,
                                     TeletextSize size = TeletextSize::Normal) {
  return {.column = column, .colour = colour, .size = size, .glyphs = glyphs(text)};
}

inline model::Subtitle teletext(std::vector<TeletextText::TextRow> rows) {
  return model::Subtitle(TeletextText{std::move(rows)});
}

struct Box {
  std::uint32_t x;
  std::uint32_t y;
  std::uint32_t width;
  std::uint32_t height;
  std::uint8_t grey;
};

/// A display with an opaque box on it.
inline model::SubtitleBitmap display(std::uint32_t width, std::uint32_t height, const Box& box) {
  auto pixels = std::make_shared<model::PixelBuffer>(width, height);
  pixels->addPaintedRows({0, height});
  for (std::uint32_t y = box.y; y < box.y + box.height; ++y) {
    std::uint8_t* row = pixels->data() + (std::size_t{y} * width + box.x) * 4;
    for (std::uint32_t x = 0; x < box.width; ++x, row += 4) {
      row[0] = row[1] = row[2] = box.grey;
      row[3] = 255;
    }
  }
  model::SubtitleBitmap bitmap;
  bitmap.visible = 1;
  bitmap.width = width;
  bitmap.height = height;
  bitmap.pixels = std::move(pixels);
  return bitmap;
}

inline Cue cue(MediaTime startMs, MediaTime stopMs, model::Subtitle subtitle) {
  return {.start = startMs * model::kMillisecond,
          .stop = stopMs * model::kMillisecond,
          .subtitle = std::make_shared<const model::Subtitle>(std::move(subtitle))};
}

}  // namespace korr::txsub
