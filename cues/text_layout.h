// SPDX-License-Identifier: MIT

// What a text subtitle looks like on the picture, whichever system it came from.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cues/logical_order.h"
#include "cues/text_span.h"
#include "model/subtitle.h"

namespace korr::txsub {

enum class TextAlign { Start, Center, End };

/// One row with text, without the blanks at its ends.
struct TextLine {
  std::int32_t row = 0;           ///< as the system numbers its rows
  std::int32_t height = 1;        ///< rows that it covers
  std::uint32_t column = 0;       ///< of the first character
  std::uint32_t columnCount = 0;  ///< characters
  std::vector<TextSpan> spans;    ///< in reading order, neighbours differ in style
  TextDirection direction = TextDirection::LeftToRight;
};

/// What is behind text as far as its window goes.
struct TextFill {
  TextColour colour = TextColour::Black;
  std::uint8_t alpha = 0xFF;
};

/// A screen of line 21 or teletext, or a window of digital captions, and where its cells lie on the
/// picture.
struct TextScreen {
  std::vector<TextLine> lines;  ///< top to bottom, none of them blank

  /// Percent of the picture from its top or left edge.
  double topOf(std::int32_t row) const { return firstRowTop + (row - firstRow) * rowHeight; }
  double leftOf(double column) const { return firstColumnLeft + column * columnWidth; }

  std::int32_t firstRow = 0;
  double firstRowTop = 0;
  double rowHeight = 0;
  double firstColumnLeft = 0;
  double columnWidth = 0;
  double columnCount = 0;
  /// Where a window says how its lines are aligned; else their columns tell.
  std::optional<TextAlign> align = {};
  std::optional<TextFill> fill = {};
  std::optional<TextOutline> border = {};  ///< around a window
  double rowCount = 0;                     ///< of a window
};

/// Lays out a text subtitle: one screen, or one for each window with text, in the order of reading;
/// none for a picture.
std::vector<TextScreen> layOut(const encoding::subtitling::Subtitle& subtitle);

}  // namespace korr::txsub
