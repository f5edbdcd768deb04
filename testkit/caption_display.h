// SPDX-License-Identifier: MIT

// What a caption decoder tells its listener, written so that tests can read it.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "model/display.h"

namespace korr::test_support {

/// A row as "15@4:text" (row and first column), gaps as '_', and the style of a run in brackets
/// where it changes: "[red i u on blue]", "[]" back to plain.
inline std::string shownRow(const encoding::subtitling::CaptionText::TextRow& row) {
  using namespace encoding::subtitling;
  constexpr const char* kColours[] = {"",    "white",  "green",   "blue", "cyan",
                                      "red", "yellow", "magenta", "black"};
  const auto styleOf = [&](const CaptionText::TextRun& run) {
    std::string style;
    const auto add = [&style](const std::string& word) {
      style += (style.empty() ? "" : " ") + word;
    };
    if (run.foreground != CaptionColour::White) add(kColours[static_cast<int>(run.foreground)]);
    if (run.italic) add("i");
    if (run.underline) add("u");
    if (run.background != CaptionColour::Black) {
      add(std::string("on ") + kColours[static_cast<int>(run.background)]);
    }
    if (run.backgroundOpacity == CaptionOpacity::SemiTransparent) add("half");
    if (run.backgroundOpacity == CaptionOpacity::Transparent) add("clear");
    return style;
  };
  std::string text = std::to_string(row.number) + "@" + std::to_string(row.runs.at(0).column) + ":";
  std::uint32_t column = row.runs.at(0).column;
  std::string before;
  for (const auto& run : row.runs) {
    for (; column < run.column; ++column) text += '_';
    if (const auto style = styleOf(run); style != before) text += "[" + (before = style) + "]";
    for (const auto& glyph : run.glyphs) text += glyph.view();
    column += static_cast<std::uint32_t>(run.glyphs.size());
  }
  return text;
}

inline std::vector<std::string> shownRows(const encoding::subtitling::Subtitle& subtitle) {
  std::vector<std::string> rows;
  for (const auto& row : subtitle.captionText()->rows) rows.push_back(shownRow(row));
  return rows;
}

/// Keeps every display with its time in milliseconds, rounded.
class DisplayRecorder final : public encoding::subtitling::IDisplayListener {
 public:
  using Display = std::pair<int, std::vector<std::string>>;

  void onDisplay(encoding::subtitling::MediaTime time,
                 encoding::subtitling::Subtitle subtitle) override {
    using encoding::subtitling::kMillisecond;
    displays.emplace_back(static_cast<int>((time + kMillisecond / 2) / kMillisecond),
                          shownRows(subtitle));
  }

  std::vector<Display> displays;
};

}  // namespace korr::test_support
