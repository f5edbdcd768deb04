// SPDX-License-Identifier: MIT

// What is kept of a picture until its text is asked for: a few bytes a letter.
#pragma once

#include <cstdint>
#include <vector>

#include "recognition/shape_book.h"

namespace korr::recognition {

struct SeenGlyph {
  ShapeId shape = kNoShape;
  std::uint32_t reading = 0;    ///< the engine's of this very place; number of a text, 0 for none
  float gapBefore = 0;          ///< pixels to the glyph left of it, as if the line stood upright
  std::int16_t left = 0;        ///< pixels of the display
  std::uint16_t colour = 0;     ///< number of a colour
  std::uint8_t confidence = 0;  ///< of the reading, percent
  std::int8_t joined = 1;       ///< glyphs that share the reading; 0 for the second of them
  std::int8_t space = -1;       ///< before it, as the engine has it: 1 yes, 0 no, -1 not known
  bool isRead = false;          ///< the engine has been here
};

struct SeenLine {
  Box box;  ///< pixels of the display
  std::int32_t baseline = 0;
  std::int32_t height = 0;  ///< of tall letters, pixels
  float slant = 0;
  std::vector<SeenGlyph> glyphs;  ///< left to right
};

struct SeenPicture {
  std::int32_t width = 0;  ///< of the display
  std::int32_t height = 0;
  bool isUnreadable = false;
  std::vector<SeenLine> lines;
};

}  // namespace korr::recognition
