// SPDX-License-Identifier: MIT
#include "recognition/quote_marks.h"

#include <algorithm>

namespace korr::recognition {

namespace {

enum class Stroke { Straight, Six, Nine };

// Of the first stroke: how far its upper third lies to the right of its lower one, and which holds
// more.
// Pixels to the left per pixel down: what the engine saw curved needs little more than that it is
// not symmetrical, what it saw straight must lean clearly.
constexpr double kLeastLean = 0.008;
constexpr double kClearLean = 0.08;

struct Lean {
  double across = 0;  // per pixel down
  double upper = 0;   // ink of the upper third, less that of the lower one
};

Lean leanOf(const Shape& shape, double slant) {
  std::int32_t right = 0;
  bool hasBegun = false;
  for (; right < shape.width; ++right) {
    int column = 0;
    for (std::int32_t y = 0; y < shape.height; ++y) column += shape.at(right, y);
    if (column > 0) hasBegun = true;
    if (hasBegun && column == 0) break;
  }
  struct Third {
    double ink = 0, middles = 0, places = 0, rows = 0;
  };
  Third upper, lower;
  const double inner = shape.height - 2;  // without the faint margin
  for (std::int32_t y = 0; y < shape.height; ++y) {
    auto* third = y - 1 < inner / 3 ? &upper : y - 1 >= inner * 2 / 3 ? &lower : nullptr;
    std::int32_t first = 0, last = right;
    while (first < last && shape.at(first, y) == 0) ++first;
    while (first < last && shape.at(last - 1, y) == 0) --last;
    if (!third || first == last) continue;
    for (std::int32_t x = first; x < last; ++x) third->ink += shape.at(x, y);
    const double from = first + 1 - shape.at(first, y) / 3.0;
    const double to = last - 1 + shape.at(last - 1, y) / 3.0;
    third->middles += (from + to) / 2;
    third->places += y;
    ++third->rows;
  }
  if (upper.rows == 0 || lower.rows == 0) return {};
  const double down = lower.places / lower.rows - upper.places / upper.rows;
  if (down <= 0) return {};
  return {.across = (upper.middles / upper.rows - lower.middles / lower.rows) / down - slant,
          .upper = upper.ink - lower.ink};
}

Stroke strokeOf(const std::vector<const Shape*>& shapes, double slant, bool isCurved) {
  Lean sum;
  for (const auto* shape : shapes) {
    const auto lean = leanOf(*shape, slant);
    sum.across += lean.across;
    sum.upper += lean.upper;
  }
  const double leastLean = isCurved ? kLeastLean : kClearLean;
  if (sum.across < leastLean * double(shapes.size())) return Stroke::Straight;
  return sum.upper >= 0 ? Stroke::Nine : Stroke::Six;
}

}  // namespace

std::string asDrawn(const std::string& text, const std::vector<const Shape*>& shapes,
                    double slant) {
  const bool isSingle = text == "'" || text == "’" || text == "‘" || text == "`" || text == "´";
  const bool isDouble = text == "\"" || text == "“" || text == "”";
  if (!isSingle && !isDouble) return text;
  const bool isCurved = text == "’" || text == "‘" || text == "“" || text == "”";
  switch (strokeOf(shapes, slant, isCurved)) {
    case Stroke::Straight:
      return isSingle ? "'" : "\"";
    case Stroke::Six:
      return isSingle ? "‘" : "“";
    case Stroke::Nine:
      return isSingle ? "’" : "”";
  }
  return text;
}

}  // namespace korr::recognition
