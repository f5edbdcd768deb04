// SPDX-License-Identifier: MIT

// Which parts of a line are one glyph.
#pragma once

#include <vector>

#include "recognition/glyph_lines.h"

namespace korr::recognition {

/// Joins what stands over each other, the two strokes of a quotation mark, and in joined scripts
/// the dots of a word; `glyphs` are single parts and come out left to right.
void joinParts(std::vector<Glyph>& glyphs, const GlyphLine& line, Script script);

}  // namespace korr::recognition
