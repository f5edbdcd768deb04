// SPDX-License-Identifier: MIT
#include "recognition/shape.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <string_view>

namespace korr::recognition {

namespace {

std::uint8_t levelOf(std::uint8_t coverage) {
  // 128 is part of a letter and gives at least 2.
  return static_cast<std::uint8_t>(coverage < 43               ? 0
                                   : coverage < kLeastCoverage ? 1
                                   : coverage < 213            ? 2
                                                               : 3);
}

// A shape with a margin of zeros, as numbers that can be shifted by parts of a pixel.
struct Field {
  std::int32_t width, height;
  std::vector<float> values;
  float& at(std::int32_t x, std::int32_t y) {
    return values[std::size_t(y) * std::size_t(width) + std::size_t(x)];
  }
  float at(std::int32_t x, std::int32_t y) const {
    return values[std::size_t(y) * std::size_t(width) + std::size_t(x)];
  }
};

constexpr std::int32_t kMargin = 3;

// The worst difference over any square of 2 by 2 pixels, and the sum of all squares, when `right`
// is moved by (dx, dy) pixels.
struct Difference {
  float worst = 0;
  float sum = 0;
};

}  // namespace

std::size_t ShapeHash::operator()(const Shape& shape) const {
  const std::string_view bytes(reinterpret_cast<const char*>(shape.levels.data()),
                               shape.levels.size());
  return std::hash<std::string_view>{}(bytes)*31 + std::size_t(shape.width) * 1009 +
         static_cast<std::size_t>(shape.rise + 5000);
}

Shape shapeOf(const LetterMask& mask, const LetterParts& parts, const GlyphLine& line,
              const Glyph& glyph) {
  const auto label = [&](std::int32_t x, std::int32_t y) -> std::uint32_t {
    if (x < 0 || y < 0 || x >= mask.width || y >= mask.height) return 0;
    return parts.labels[std::size_t(y) * std::size_t(mask.width) + std::size_t(x)];
  };
  const auto isOwn = [&](std::uint32_t number) {
    return number != 0 &&
           std::find(glyph.parts.begin(), glyph.parts.end(), number - 1) != glyph.parts.end();
  };
  // One pixel around, for what is too faint to be a part of the letter by itself.
  const Box box{.left = glyph.box.left - 1,
                .top = glyph.box.top - 1,
                .right = glyph.box.right + 1,
                .bottom = glyph.box.bottom + 1};
  Shape shape{
      .width = box.width(), .height = box.height(), .rise = line.baseline - box.top, .levels = {}};
  shape.levels.assign(std::size_t(shape.width) * std::size_t(shape.height), 0);
  for (std::int32_t y = box.top; y < box.bottom; ++y) {
    for (std::int32_t x = box.left; x < box.right; ++x) {
      if (x < 0 || y < 0 || x >= mask.width || y >= mask.height) continue;
      const auto level = levelOf(mask.at(x, y));
      if (level == 0) continue;
      const auto own = label(x, y);
      bool take = isOwn(own);
      if (!take && own == 0) {
        take = isOwn(label(x - 1, y)) || isOwn(label(x + 1, y)) || isOwn(label(x, y - 1)) ||
               isOwn(label(x, y + 1));
      }
      if (take)
        shape.levels[std::size_t(y - box.top) * std::size_t(shape.width) +
                     std::size_t(x - box.left)] = level;
    }
  }
  return shape;
}

bool areAlike(const Shape& left, const Shape& right) {
  const auto height = std::max(left.height, right.height);
  if (std::abs(left.width - right.width) > 2 ||
      std::abs(left.height - right.height) > 1 + height / 40 ||
      std::abs(left.rise - right.rise) > 1 + height / 40) {
    return false;
  }
  const std::int32_t w = std::max(left.width, right.width) + 2 * kMargin;
  const std::int32_t h = height + 2 * kMargin;
  const auto value = [](const Shape& s, std::int32_t x, std::int32_t y) {
    return float(s.at(x - kMargin, y - kMargin)) / 3;
  };
  // Aligned by their tops; the baseline may be off by one where a line has few letters.
  float bestWorst = 1e9f;
  std::vector<float> a(std::size_t(w) * std::size_t(h)), b(a.size()), d(a.size());
  float ink = 0;
  for (std::int32_t y = 0; y < h; ++y) {
    for (std::int32_t x = 0; x < w; ++x) {
      const auto i = std::size_t(y) * std::size_t(w) + std::size_t(x);
      a[i] = value(left, x, y);
      b[i] = value(right, x, y);
      ink += a[i];
    }
  }
  const std::array<float, 9> steps{-1.f, -.75f, -.5f, -.25f, 0.f, .25f, .5f, .75f, 1.f};
  std::vector<float> moved(a.size());
  for (std::int32_t dy = -1; dy <= 1; ++dy) {
    for (const float dx : steps) {
      const auto whole = static_cast<std::int32_t>(std::floor(dx));
      const float part = dx - float(whole);
      float sum = 0;
      for (std::int32_t y = 1; y < h - 1; ++y) {
        for (std::int32_t x = 2; x < w - 2; ++x) {
          const auto at = std::size_t(y + dy) * std::size_t(w) + std::size_t(x + whole);
          const float moveded = b[at] * (1 - part) + b[at + 1] * part;
          const auto i = std::size_t(y) * std::size_t(w) + std::size_t(x);
          d[i] = a[i] - moveded;
          sum += d[i] * d[i];
        }
      }
      if (sum > 0.10f * ink + 0.8f) continue;
      float worst = 0;
      for (std::int32_t y = 1; y < h - 2; ++y) {
        for (std::int32_t x = 2; x < w - 3; ++x) {
          const auto i = std::size_t(y) * std::size_t(w) + std::size_t(x);
          worst = std::max(
              worst, std::abs(d[i] + d[i + 1] + d[i + std::size_t(w)] + d[i + std::size_t(w) + 1]));
        }
      }
      bestWorst = std::min(bestWorst, worst);
    }
  }
  return bestWorst < 1.25f;
}

}  // namespace korr::recognition
