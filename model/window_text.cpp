// SPDX-License-Identifier: MIT
#include "model/window_text.h"

#include <algorithm>

namespace korr::encoding::subtitling::inline v2_1 {
namespace {

constexpr double kSafeAreaStart = 10;
constexpr double kSafeArea = 80;
constexpr double kRowsAcross = 15;

// Where a side begins: `halves` says how many halves of it lie before the anchor.
double startOf(double anchorPercent, double size, unsigned halves) {
  const double start = kSafeAreaStart + anchorPercent * kSafeArea / 100 - size * halves / 2;
  return std::max(0.0, std::min(start, 100 - size));
}

}  // namespace

double letterSize(const WindowText::Pen& pen) {
  constexpr double kSmall = 0.75;
  constexpr double kLarge = 1.25;
  constexpr double kScript = 0.65;
  double size = 1;
  if (pen.size == WindowText::PenSize::Small) size = kSmall;
  if (pen.size == WindowText::PenSize::Large) size = kLarge;
  return pen.offset == WindowText::Offset::Normal ? size : size * kScript;
}

WindowArea areaOf(const WindowText& text, const WindowText::Window& window) {
  const auto anchor = static_cast<unsigned>(window.anchor);
  const double width = window.columnCount * kSafeArea / text.columnsAcross;
  const double height = window.rowCount * kSafeArea / kRowsAcross;
  return {.left = startOf(window.anchorX, width, anchor % 3),
          .top = startOf(window.anchorY, height, anchor / 3),
          .width = width,
          .height = height};
}

}  // namespace korr::encoding::subtitling::inline v2_1
