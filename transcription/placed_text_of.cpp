// SPDX-License-Identifier: MIT
#include "transcription/placed_text_of.h"

#include <algorithm>
#include <cmath>

#include "recognition/writing_order.h"

namespace korr::txsub {

namespace {

using encoding::subtitling::PlacedText;

// Percent of the picture.
constexpr double kSamePlace = 1;

PlacedText::Line lineOf(const recognition::RecognisedLine& line,
                        const recognition::RecognisedPicture& picture) {
  const auto across = [&](std::int32_t x) { return x * 100.0 / picture.displayWidth; };
  const auto down = [&](std::int32_t y) { return y * 100.0 / picture.displayHeight; };
  PlacedText::Line out;
  out.left = across(line.box.left);
  out.right = across(line.box.right);
  out.baseline = down(line.baseline);
  out.height = down(line.height);
  out.isRightToLeft = recognition::isRightToLeft(line.text());
  for (const auto& run : line.runs) {
    const auto& colour = run.colour;
    out.runs.push_back({run.text, {colour.red, colour.green, colour.blue}, run.italic});
  }
  return out;
}

}  // namespace

PlacedText placedTextOf(const recognition::RecognisedPicture& picture) {
  PlacedText text;
  text.confidence = picture.confidence;
  for (const auto& line : picture.lines) text.lines.push_back(lineOf(line, picture));
  return text;
}

bool saySame(const PlacedText& left, const PlacedText& right) {
  return std::ranges::equal(left.lines, right.lines, [](const auto& one, const auto& other) {
    return one.runs == other.runs && std::abs(one.left - other.left) < kSamePlace &&
           std::abs(one.baseline - other.baseline) < kSamePlace;
  });
}

}  // namespace korr::txsub
