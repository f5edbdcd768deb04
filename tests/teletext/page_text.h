// SPDX-License-Identifier: MIT

// Teletext pages as text that tests compare.
#pragma once

#include <sstream>
#include <string>

#include "model/subtitle.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {

/// A page as lines such as "20: 4/7/12 'text'": row, then each run's column, colour, size and text;
/// a cell that a wide letter covers is "<".
inline std::string describe(const Subtitle& subtitle) {
  std::ostringstream lines;
  for (const auto& row : subtitle.teletextText()->rows) {
    lines << row.number << ':';
    for (const auto& run : row.runs) {
      lines << ' ' << run.column << '/' << static_cast<int>(run.colour) << '/'
            << static_cast<int>(run.size) << " '";
      for (const auto& glyph : run.glyphs) lines << (glyph.view().empty() ? "<" : glyph.view());
      lines << '\'';
    }
    lines << '\n';
  }
  return lines.str();
}

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
