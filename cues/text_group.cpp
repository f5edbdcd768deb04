// SPDX-License-Identifier: MIT
#include "cues/text_group.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace korr::txsub {

namespace {

using Lines = std::span<const TextLine>;

// A gap of one row still belongs together: double-spaced lines are one utterance.
constexpr std::int32_t kWidestGap = 1;

// Columns by which centred lines may miss their common centre: half a cell for each odd length and
// the cells of control codes.
constexpr double kCentreTolerance = 1;

// A line that leaves less free at its sides fills its row; it is not meant to be centred.
constexpr double kLeastMargin = 2;

bool standTogether(const TextLine& upper, const TextLine& lower, GroupHeights heights) {
  if (heights == GroupHeights::Equal && upper.height != lower.height) return false;
  // A paragraph of a document, and a cue in browsers, has one direction.
  if (upper.direction != lower.direction) return false;
  return lower.row <= upper.row + upper.height + kWidestGap;
}

Lines firstGroup(Lines lines, GroupHeights heights) {
  std::size_t size = 1;
  while (size < lines.size() && standTogether(lines[size - 1], lines[size], heights)) ++size;
  return lines.first(size);
}

double startOf(const TextLine& line) {
  return line.column;
}
double endOf(const TextLine& line) {
  return line.column + line.columnCount;
}
double centreOf(const TextLine& line) {
  return (startOf(line) + endOf(line)) / 2;
}

struct Range {
  double least;
  double most;

  double size() const { return most - least; }
};

template <class Measure>
Range rangeOf(Lines lines, Measure measure) {
  const auto [least, most] = std::ranges::minmax_element(lines, {}, measure);
  return {measure(*least), measure(*most)};
}

// Lines centred on the picture or with each other, or that end together, keep that; all others
// start at the leftmost one.
TextGroup align(Lines lines, const TextScreen& screen) {
  const double columnCount = screen.columnCount;
  if (screen.align == TextAlign::Center) return {lines, TextAlign::Center, columnCount / 2};
  if (screen.align == TextAlign::End) return {lines, TextAlign::End, columnCount};
  const Range starts = rangeOf(lines, startOf);
  const Range ends = rangeOf(lines, endOf);
  const Range centres = rangeOf(lines, centreOf);
  const double middle = columnCount / 2;
  const bool isMiddle = std::abs(centres.least - middle) <= kCentreTolerance &&
                        std::abs(centres.most - middle) <= kCentreTolerance;
  if (isMiddle && starts.least >= kLeastMargin) return {lines, TextAlign::Center, middle};
  if (starts.size() == 0) return {lines, TextAlign::Start, starts.least};
  if (ends.size() == 0) return {lines, TextAlign::End, ends.most};
  if (centres.size() <= 2 * kCentreTolerance) {
    return {lines, TextAlign::Center, (centres.least + centres.most) / 2};
  }
  return {lines, TextAlign::Start, starts.least};
}

}  // namespace

bool TextGroup::isRightToLeft() const {
  return std::ranges::any_of(
      lines, [](const TextLine& line) { return line.direction == TextDirection::RightToLeft; });
}

const char* alignmentName(const TextGroup& group) {
  const bool isRightToLeft = group.isRightToLeft();
  switch (group.align) {
    case TextAlign::Start:
      break;
    case TextAlign::Center:
      return "center";
    case TextAlign::End:
      return isRightToLeft ? "right" : "end";
  }
  return isRightToLeft ? "left" : "start";
}

std::vector<TextGroup> groupsOf(const TextScreen& screen, GroupHeights heights) {
  std::vector<TextGroup> groups;
  for (Lines rest = screen.lines; !rest.empty();) {
    const Lines lines = firstGroup(rest, heights);
    groups.push_back(align(lines, screen));
    rest = rest.subspan(lines.size());
  }
  return groups;
}

std::string decimal(double number) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2f", number);
  std::string result = text;
  result.erase(result.find_last_not_of('0') + 1);
  if (result.back() == '.') result.pop_back();
  return result;
}

}  // namespace korr::txsub
