// Subtitles for tests, written as they look.
#pragma once

#include <memory>
#include <string_view>

#include "core/subtitle.h"
#include "txsub/output/cue.h"

namespace korr::txsub {

namespace model = encoding::subtitling;

inline std::vector<model::GlyphText> glyphs(std::string_view ascii) {
  std::vector<model::GlyphText> cells;
  for (const char c : ascii) cells.emplace_back(c);
  return cells;
}

inline model::CaptionText::TextRun captionRun(std::uint32_t column, std::string_view text) {
  model::CaptionText::TextRun run;
  run.column = column;
  run.glyphs = glyphs(text);
  return run;
}

inline model::CaptionText::TextRow captionRow(std::int32_t number,
                                              std::vector<model::CaptionText::TextRun> runs) {
  model::CaptionText::TextRow row;
  row.number = number;
  row.runs = std::move(runs);
  return row;
}

inline model::Subtitle captions(std::vector<model::CaptionText::TextRow> rows) {
  return model::Subtitle(model::CaptionText{std::move(rows)});
}

inline Cue cue(MediaTime startMs, MediaTime stopMs, model::Subtitle subtitle) {
  return {.start = startMs * model::kMillisecond,
          .stop = stopMs * model::kMillisecond,
          .subtitle = std::make_shared<const model::Subtitle>(std::move(subtitle))};
}

}  // namespace korr::txsub
