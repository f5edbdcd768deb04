// SPDX-License-Identifier: MIT
#include "recognition/glyph_joining.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace korr::recognition {

namespace {

std::int32_t overlap(std::int32_t from, std::int32_t to, std::int32_t otherFrom,
                     std::int32_t otherTo) {
  return std::min(to, otherTo) - std::max(from, otherFrom);
}

template <class Belong>
void joinWhere(std::vector<Glyph>& glyphs, Belong belong, std::size_t reach) {
  for (std::size_t i = 0; i < glyphs.size(); ++i) {
    for (std::size_t j = i + 1; j < glyphs.size() && j <= i + reach;) {
      if (!belong(glyphs[i], glyphs[j])) {
        ++j;
        continue;
      }
      auto& a = glyphs[i];
      auto& b = glyphs[j];
      a.parts.insert(a.parts.end(), b.parts.begin(), b.parts.end());
      a.box.include(b.box);
      a.left = std::min(a.left, b.left);
      a.right = std::max(a.right, b.right);
      glyphs.erase(glyphs.begin() + static_cast<std::ptrdiff_t>(j));
      j = i + 1;
    }
  }
}

// Dots and accents over or under what they belong to.
bool areStacked(const Glyph& a, const Glyph& b, const GlyphLine& line) {
  const double across = std::min(a.right, b.right) - std::max(a.left, b.left);
  if (across < 0.5 * std::min(a.right - a.left, b.right - b.left)) return false;
  const auto down = overlap(a.box.top, a.box.bottom, b.box.top, b.box.bottom);
  return down <= std::max(1, line.height / 12) ||
         (across >= 0.9 * std::min(a.right - a.left, b.right - b.left) &&
          down * 2 <= std::min(a.box.height(), b.box.height()));
}

// Dots within the width of a word in a joined script, and the dots of one letter beside each
// other.
bool isDotOf(const Glyph& a, const Glyph& b, const GlyphLine& line) {
  const double across = std::min(a.right, b.right) - std::max(a.left, b.left);
  const auto low = std::min(a.box.height(), b.box.height());
  return low * 2 < line.height && across >= 0.5 * std::min(a.right - a.left, b.right - b.left);
}

// The two strokes of a quotation mark of whatever kind: alike, close, and too low for letters.
bool areQuotes(const Glyph& a, const Glyph& b, const GlyphLine& line) {
  if (a.parts.size() != 1 || b.parts.size() != 1) return false;
  const double gap = b.left - a.right;
  const bool areAlike = std::abs(a.box.height() - b.box.height()) <= 1 &&
                        std::abs(a.box.width() - b.box.width()) <= 1 &&
                        std::abs(a.box.top - b.box.top) <= 1;
  const bool isDot = a.box.height() * 10 < a.box.width() * 13 &&
                     a.box.bottom > line.baseline - line.height / 3 &&
                     a.box.height() * 4 < line.height;
  return areAlike && !isDot && a.box.height() * 20 < line.height * 11 &&
         a.box.height() * 3 > a.box.width() * 2 && gap <= 0.15 * line.height + 1;
}

}  // namespace

void joinParts(std::vector<Glyph>& glyphs, const GlyphLine& line, Script script) {
  const auto byLeft = [](const Glyph& a, const Glyph& b) { return a.left < b.left; };
  const auto joinAll = [&](auto belong, std::size_t reach) {
    std::stable_sort(glyphs.begin(), glyphs.end(), byLeft);
    joinWhere(
        glyphs, [&](const Glyph& a, const Glyph& b) { return belong(a, b, line); }, reach);
  };
  if (script == Script::Joined) {
    joinAll(isDotOf, 12);
  } else {
    joinAll(areStacked, 3);
    joinAll(areQuotes, 1);
  }
  std::stable_sort(glyphs.begin(), glyphs.end(), byLeft);
}

}  // namespace korr::recognition
