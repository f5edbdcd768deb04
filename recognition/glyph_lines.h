// SPDX-License-Identifier: MIT

// Lines of letters out of the parts of a picture.
#pragma once

#include <cstdint>
#include <vector>

#include "recognition/letter_parts.h"

namespace korr::recognition {

/// One or more parts that stand above each other, or the two strokes of a quotation mark: mostly
/// one letter, several where they touch.
struct Glyph {
  std::vector<std::uint32_t> parts;  ///< of LetterParts
  Box box;
  double left = 0;   ///< pixels, as if the line stood upright
  double right = 0;  ///< the same
};

struct GlyphLine {
  std::vector<Glyph> glyphs;  ///< left to right
  std::int32_t baseline = 0;  ///< the first row below letters that do not descend
  std::int32_t height = 0;    ///< of its tall letters, pixels
  double slant = 0;           ///< pixels to the right per pixel up; 0.2 is a usual italic
};

/// Joined: Arabic, where a glyph is what is written without lifting the pen, with all its dots.
enum class Script { Separate, Joined };

/// Lines top to bottom.
std::vector<GlyphLine> findLines(const LetterMask& mask, const LetterParts& parts, Script script);

/// How far the letters between two rows lean, from what columns they fill best. 0 for what is too
/// small to tell.
double slantOf(const LetterMask& mask, const LetterParts& parts,
               const std::vector<std::uint32_t>& chosen, std::int32_t baseline);

}  // namespace korr::recognition
