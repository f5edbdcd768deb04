// SPDX-License-Identifier: MIT
#include "recognition/line_image.h"

#include <algorithm>
#include <cmath>

namespace korr::recognition {

namespace {

constexpr double kLetterHeight = 32;  // pixels of a capital letter
constexpr double kJoinedHeight = 48;  // of a line whose letters differ in height
constexpr std::int32_t kPadding = 12;
constexpr double kMostScale = 6;
constexpr double kMostWidth = 8000;

}  // namespace

ScaledLine drawLine(const LetterMask& mask, const LetterParts& parts, const GlyphLine& line,
                    Script script, double zoom) {
  Box box = line.glyphs.front().box;
  for (const auto& glyph : line.glyphs) box.include(glyph.box);
  box = {
      .left = box.left - 1, .top = box.top - 1, .right = box.right + 1, .bottom = box.bottom + 1};

  // The line's own pixels, and the faint ones beside them.
  std::vector<bool> isOwn(parts.parts.size() + 1);
  for (const auto& glyph : line.glyphs) {
    for (const auto part : glyph.parts) isOwn[part + 1] = true;
  }
  const auto coverage = [&](std::int32_t x, std::int32_t y) -> double {
    if (x < 0 || y < 0 || x >= mask.width || y >= mask.height) return 0;
    const auto own = parts.labels[std::size_t(y) * std::size_t(mask.width) + std::size_t(x)];
    return own != 0 && !isOwn[own] ? 0 : mask.at(x, y);
  };

  ScaledLine out;
  const double fitting =
      script == Script::Joined ? kJoinedHeight / box.height() : kLetterHeight / line.height;
  out.scale = std::min({fitting * zoom, kMostScale, kMostWidth / box.width()});
  out.left = box.left - kPadding / out.scale;
  out.image.width = static_cast<std::int32_t>(std::lround(box.width() * out.scale)) + 2 * kPadding;
  out.image.height =
      static_cast<std::int32_t>(std::lround(box.height() * out.scale)) + 2 * kPadding;
  out.image.grey.resize(std::size_t(out.image.width) * std::size_t(out.image.height));
  // Shrinking takes the mean of four points in each pixel.
  const int points = out.scale < 1 ? 2 : 1;
  for (std::int32_t y = 0; y < out.image.height; ++y) {
    for (std::int32_t x = 0; x < out.image.width; ++x) {
      double sum = 0;
      for (int j = 0; j < points; ++j) {
        for (int i = 0; i < points; ++i) {
          const double px = (x + (i + 0.5) / points - kPadding) / out.scale + box.left - 0.5;
          const double py = (y + (j + 0.5) / points - kPadding) / out.scale + box.top - 0.5;
          const auto ix = static_cast<std::int32_t>(std::floor(px));
          const auto iy = static_cast<std::int32_t>(std::floor(py));
          const double fx = px - ix, fy = py - iy;
          sum += (coverage(ix, iy) * (1 - fx) + coverage(ix + 1, iy) * fx) * (1 - fy) +
                 (coverage(ix, iy + 1) * (1 - fx) + coverage(ix + 1, iy + 1) * fx) * fy;
        }
      }
      out.image.grey[std::size_t(y) * std::size_t(out.image.width) + std::size_t(x)] =
          static_cast<std::uint8_t>(255 - std::lround(sum / (points * points)));
    }
  }
  return out;
}

}  // namespace korr::recognition
