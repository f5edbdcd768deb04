// SPDX-License-Identifier: MIT

// The exact picture of a letter.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "recognition/glyph_lines.h"

namespace korr::recognition {

/// Coverage in four levels, 0 to 3, and where it stands: a comma is no apostrophe.
struct Shape {
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::int32_t rise = 0;  ///< rows from its top down to the baseline; negative for what hangs below
  std::vector<std::uint8_t> levels;  ///< width * height

  int at(std::int32_t x, std::int32_t y) const {
    if (x < 0 || y < 0 || x >= width || y >= height) return 0;
    return levels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                  static_cast<std::size_t>(x)];
  }

  friend bool operator==(const Shape&, const Shape&) = default;
};

struct ShapeHash {
  std::size_t operator()(const Shape& shape) const;
};

/// What one glyph of a line looks like.
Shape shapeOf(const LetterMask& mask, const LetterParts& parts, const GlyphLine& line,
              const Glyph& glyph);

/// Whether two shapes are one letter of one font that a renderer placed some part of a pixel apart:
/// no difference but along contours.
bool areAlike(const Shape& left, const Shape& right);

}  // namespace korr::recognition
