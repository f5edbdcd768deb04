// What a text subtitle looks like on the picture, whichever system it came from.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "model/subtitle.h"

namespace korr::txsub {

/// The eight colours of both systems, by their WebVTT names: "lime" is their green.
enum class TextColour { White, Lime, Blue, Cyan, Red, Yellow, Magenta, Black };

const char* colourName(TextColour colour);

/// Characters of one style.
struct TextSpan {
  std::string text;  ///< UTF-8
  TextColour foreground = TextColour::White;
  TextColour background = TextColour::Black;
  std::uint8_t backgroundAlpha = 0xFF;  ///< 0xFF opaque; 0x99 behind teletext
  bool italic = false;
  bool underline = false;

  bool hasStyleOf(const TextSpan& other) const {
    return foreground == other.foreground && background == other.background &&
           backgroundAlpha == other.backgroundAlpha && italic == other.italic &&
           underline == other.underline;
  }
};

/// One row with text, without the blanks at its ends.
struct TextLine {
  std::int32_t row = 0;           ///< as the system numbers its rows
  std::int32_t height = 1;        ///< rows that it covers
  std::uint32_t column = 0;       ///< of the first character
  std::uint32_t columnCount = 0;  ///< characters
  std::vector<TextSpan> spans;    ///< neighbours differ in style
};

/// A screen of one of the two text systems, and where its cells lie on the picture.
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
};

/// Lays out a text subtitle; nothing for a picture.
std::optional<TextScreen> layOut(const encoding::subtitling::Subtitle& subtitle);

}  // namespace korr::txsub
