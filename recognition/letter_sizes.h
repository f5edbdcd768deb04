// SPDX-License-Identifier: MIT

// How big the letters of a service are, as far as they are known.
#pragma once

#include <optional>
#include <string>
#include <unordered_map>

#include "recognition/glyph_lines.h"

namespace korr::recognition {

/// In heights of a tall letter, so that one font in two sizes is one.
struct LetterSize {
  double width = 0;
  double top = 0;     ///< above the baseline
  double bottom = 0;  ///< above the baseline; negative below
  /// The same two in pixels: a line of small letters only does not tell how high tall ones are.
  double pixelTop = 0;
  double pixelBottom = 0;
};

LetterSize sizeOf(const Glyph& glyph, const GlyphLine& line);

/// Learns from letters that stand alone in their glyph.
class LetterSizes {
 public:
  void learn(const std::string& letter, const LetterSize& size, double weight);

  /// Nothing before a letter has been seen often enough.
  std::optional<LetterSize> of(const std::string& letter) const;

 private:
  struct Sum {
    LetterSize size;
    double weight = 0;
  };
  std::unordered_map<std::string, Sum> sums_;
};

}  // namespace korr::recognition
