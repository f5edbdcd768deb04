// SPDX-License-Identifier: MIT
#include "recognition/letter_sizes.h"

namespace korr::recognition {

namespace {

constexpr double kLeastWeight = 1.2;
constexpr std::size_t kMostLetters = 4000;

}  // namespace

LetterSize sizeOf(const Glyph& glyph, const GlyphLine& line) {
  const double unit = line.height;
  return {.width = (glyph.right - glyph.left) / unit,
          .top = (line.baseline - glyph.box.top) / unit,
          .bottom = (line.baseline - glyph.box.bottom) / unit,
          .pixelTop = double(line.baseline - glyph.box.top),
          .pixelBottom = double(line.baseline - glyph.box.bottom)};
}

void LetterSizes::learn(const std::string& letter, const LetterSize& size, double weight) {
  if (sums_.size() >= kMostLetters && !sums_.contains(letter)) return;
  auto& sum = sums_[letter];
  sum.weight += weight;
  const double share = weight / sum.weight;
  for (double LetterSize::*part : {&LetterSize::width, &LetterSize::top, &LetterSize::bottom,
                                   &LetterSize::pixelTop, &LetterSize::pixelBottom}) {
    sum.size.*part += (size.*part - sum.size.*part) * share;
  }
}

std::optional<LetterSize> LetterSizes::of(const std::string& letter) const {
  const auto found = sums_.find(letter);
  if (found == sums_.end() || found->second.weight < kLeastWeight) return std::nullopt;
  return found->second.size;
}

}  // namespace korr::recognition
