// SPDX-License-Identifier: MIT

// Which glyph of a line an engine meant by which symbol.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "recognition/letter_sizes.h"
#include "recognition/line_engine.h"

namespace korr::recognition {

/// What an engine read of one glyph.
struct GlyphReading {
  std::string text;          ///< in the order in which it is read; empty: nothing
  double confidence = 0;     ///< 0 to 1
  int glyphs = 1;            ///< that share the text; 0 for the second and third of them
  bool isKnown = false;      ///< whether the glyph has been aligned at all
  bool spaceBefore = false;  ///< between this glyph and the one left of it
};

/// What is known already of a glyph: how sure it is that its text is `text`, from -1 (certainly
/// not) to 1.
using GlyphPrior = std::function<double(std::size_t glyph, const std::string& text)>;

struct Alignment {
  std::vector<GlyphReading> readings;  ///< one for each glyph
  std::size_t unmatched = 0;           ///< glyphs without a symbol
  double cost = 0;                     ///< to compare answers for one line; less is better
};

/// The symbols' places are in pixels of the picture and are taken as
/// rough; order, size and kind of the glyphs decide with them.
Alignment align(const GlyphLine& line, std::vector<EngineSymbol> symbols, const GlyphPrior& prior,
                const LetterSizes& sizes);

}  // namespace korr::recognition
