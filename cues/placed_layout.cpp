// SPDX-License-Identifier: MIT
#include "cues/placed_layout.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace korr::txsub {

namespace {

using encoding::subtitling::PlacedText;
using Lines = std::span<const PlacedText::Line>;

// In heights of a capital letter: what a line takes up, and how far apart lines of one block stand.
constexpr double kLeastPitch = 1.4;
constexpr double kUsualPitch = 1.8;
constexpr double kMostPitch = 2.2;
constexpr double kWidestPitch = 3.2;
constexpr double kDescent = 0.45;

// Percent of the picture's width.
constexpr double kEdgeTolerance = 1;
constexpr double kMiddleTolerance = 2;

// Boxes are dimmed rather than blacked out, as those of other systems.
constexpr std::uint8_t kBackgroundAlpha = 0x99;

double centreOf(const PlacedText::Line& line) {
  return (line.left + line.right) / 2;
}

bool standTogether(const PlacedText::Line& upper, const PlacedText::Line& lower) {
  return lower.baseline - upper.baseline <= kWidestPitch * std::max(upper.height, lower.height);
}

Lines firstBlock(Lines lines) {
  std::size_t size = 1;
  while (size < lines.size() && standTogether(lines[size - 1], lines[size])) ++size;
  return lines.first(size);
}

template <class Measure>
bool areWithin(Lines lines, double tolerance, Measure measure) {
  const auto [least, most] = std::ranges::minmax_element(lines, {}, measure);
  return measure(*most) - measure(*least) <= tolerance;
}

TextAlign alignOf(Lines lines) {
  const auto missesMiddle = [](const PlacedText::Line& line) {
    return std::abs(centreOf(line) - 50) > kMiddleTolerance;
  };
  if (std::ranges::none_of(lines, missesMiddle)) return TextAlign::Center;
  if (areWithin(lines, kEdgeTolerance, [](const auto& line) { return line.left; })) {
    return TextAlign::Start;
  }
  if (areWithin(lines, kEdgeTolerance, [](const auto& line) { return line.right; })) {
    return TextAlign::End;
  }
  const bool isCentred = areWithin(lines, 2 * kMiddleTolerance, centreOf);
  return isCentred ? TextAlign::Center : TextAlign::Start;
}

std::uint32_t lettersOf(const PlacedText::Line& line) {
  std::uint32_t count = 0;
  for (const auto& run : line.runs) {
    for (const char byte : run.text) count += (byte & 0xC0) != 0x80;
  }
  return std::max(count, 1U);
}

TextLine lineOf(const PlacedText::Line& line) {
  TextLine out;
  out.columnCount = lettersOf(line);
  for (const auto& run : line.runs) {
    TextSpan span;
    span.text = run.text;
    span.foreground = paintedColourOf(run.colour.red, run.colour.green, run.colour.blue);
    span.backgroundAlpha = kBackgroundAlpha;
    span.italic = run.italic;
    out.spans.push_back(std::move(span));
  }
  if (line.isRightToLeft) out.direction = TextDirection::RightToLeft;
  return out;
}

double pitchOf(Lines lines) {
  double height = 0;
  for (const auto& line : lines) height = std::max(height, line.height);
  if (lines.size() == 1) return kUsualPitch * height;
  const double measured =
      (lines.back().baseline - lines.front().baseline) / static_cast<double>(lines.size() - 1);
  return std::clamp(measured, kLeastPitch * height, kMostPitch * height);
}

// Columns as wide as letters are on average, with the edge or the middle of the block where it was.
void setColumns(TextScreen& screen, Lines lines, TextAlign align) {
  double width = 0, letters = 0;
  double left = 100, right = 0;
  for (const auto& line : lines) {
    width += line.right - line.left;
    letters += lettersOf(line);
    left = std::min(left, line.left);
    right = std::max(right, line.right);
  }
  screen.columnWidth = std::clamp(width / letters, 0.1, 100.0);
  double end = 100;
  if (align == TextAlign::Start) screen.firstColumnLeft = left;
  if (align == TextAlign::End) end = right;
  if (align == TextAlign::Center) {
    const double middle = (left + right) / 2;
    const double half = std::min(middle, 100 - middle);
    screen.firstColumnLeft = middle - half;
    end = middle + half;
  }
  screen.columnCount = (end - screen.firstColumnLeft) / screen.columnWidth;
  if (align != TextAlign::Start) screen.align = align;
}

// Whole rows, the last of them where it was, or the first in the upper half of the picture.
void setRows(TextScreen& screen, Lines lines) {
  const double pitch = pitchOf(lines);
  const double descent = kDescent * lines.back().height;
  const double count = static_cast<double>(lines.size());
  const bool isUpper = lines.back().baseline < 50;
  screen.rowHeight = pitch;
  screen.firstRowTop = isUpper ? lines.front().baseline + descent - pitch
                               : lines.back().baseline + descent - count * pitch;
  screen.firstRowTop = std::clamp(screen.firstRowTop, 0.0, std::max(0.0, 100 - count * pitch));
}

TextScreen screenOf(Lines lines) {
  TextScreen screen;
  const TextAlign align = alignOf(lines);
  setColumns(screen, lines, align);
  setRows(screen, lines);
  for (const auto& line : lines) {
    auto& out = screen.lines.emplace_back(lineOf(line));
    out.row = static_cast<std::int32_t>(screen.lines.size()) - 1;
    if (align == TextAlign::Start) continue;
    const double column = (line.left - screen.firstColumnLeft) / screen.columnWidth;
    out.column = static_cast<std::uint32_t>(std::max(0.0, std::round(column)));
  }
  return screen;
}

}  // namespace

std::vector<TextScreen> layOutPlaced(const PlacedText& text) {
  std::vector<TextScreen> screens;
  for (Lines rest = text.lines; !rest.empty();) {
    const Lines block = firstBlock(rest);
    screens.push_back(screenOf(block));
    rest = rest.subspan(block.size());
  }
  return screens;
}

}  // namespace korr::txsub
