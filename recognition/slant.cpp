// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>

#include "recognition/glyph_lines.h"

namespace korr::recognition {

double slantOf(const LetterMask& mask, const LetterParts& parts,
               const std::vector<std::uint32_t>& chosen, std::int32_t baseline) {
  constexpr int kSteps = 17;  // from -0.08 to 0.56
  constexpr double kStep = 0.04;
  std::int64_t pixels = 0;
  std::int32_t left = mask.width, right = 0, tallest = 0;
  for (const auto part : chosen) {
    const auto& box = parts.parts[part].box;
    left = std::min(left, box.left);
    right = std::max(right, box.right);
    tallest = std::max(tallest, box.height());
    pixels += parts.parts[part].pixels;
  }
  if (chosen.empty() || tallest < 6 || pixels > 200'000) return 0;
  const auto margin = tallest + 2;
  double best = -1;
  int bestStep = 2;
  std::array<double, kSteps> scores{};
  std::vector<double> columns(static_cast<std::size_t>(right - left + 2 * margin + 2));
  for (int step = 0; step < kSteps; ++step) {
    const double slant = (step - 2) * kStep;
    std::fill(columns.begin(), columns.end(), 0.0);
    for (const auto part : chosen) {
      const auto& box = parts.parts[part].box;
      for (std::int32_t y = box.top; y < box.bottom; ++y) {
        const double shift = (y + 0.5 - baseline) * slant + margin - left;
        const std::size_t row = static_cast<std::size_t>(y) * static_cast<std::size_t>(mask.width);
        for (std::int32_t x = box.left; x < box.right; ++x) {
          if (parts.labels[row + static_cast<std::size_t>(x)] != part + 1) continue;
          const double place = std::max(0.0, x + shift);
          const auto column = std::min(static_cast<std::size_t>(place), columns.size() - 2);
          const double share = place - double(column);
          columns[column] += 1 - share;
          columns[column + 1] += share;
        }
      }
    }
    double score = 0;
    for (std::size_t i = 1; i < columns.size(); ++i) {
      score += (columns[i] - columns[i - 1]) * (columns[i] - columns[i - 1]);
    }
    scores[static_cast<std::size_t>(step)] = score;
    if (score > best) {
      best = score;
      bestStep = step;
    }
  }
  const double slant = (bestStep - 2) * kStep;
  return best > 1.1 * scores[2] && slant >= 0.1 ? slant : 0;
}

}  // namespace korr::recognition
