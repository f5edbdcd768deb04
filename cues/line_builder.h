// SPDX-License-Identifier: MIT

// Cells of a row to the spans of a line.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

#include "cues/text_layout.h"

namespace korr::txsub {

/// What becomes of blanks between characters.
enum class Blanks { AsTheyAre, AsOne };

/// Collects the cells of a row into spans, without the blanks at its ends.
class LineBuilder {
 public:
  LineBuilder(std::int32_t row, std::uint32_t column, Blanks blanksBetween)
      : blanksBetween_(blanksBetween) {
    line_.row = row;
    line_.column = column;
  }

  void add(std::string_view glyph, const TextSpan& style) {
    if (glyph == " ") {
      addBlank();
      return;
    }
    if (isEmpty() || !line_.spans.back().hasStyleOf(style)) {
      // A blank shows no colour: it stays outside of what is marked, where it can.
      const bool isPlain = style.hasStyleOf({.text = {}, .backgroundAlpha = style.backgroundAlpha});
      if (!isEmpty() && !isPlain) placeBlanks();
      line_.spans.push_back(style);
    }
    placeBlanks();
    line_.spans.back().text += glyph;
    ++line_.columnCount;
  }

  void addBlank() {
    if (isEmpty()) {
      ++line_.column;
    } else {
      ++blanks_;
      ++line_.columnCount;
    }
  }

  /// A cell that the wide letter before it covers.
  void addCovered() {
    if (isEmpty() || blanks_ != 0) {
      addBlank();
    } else {
      ++line_.columnCount;
    }
  }

  /// Blanks up to a column, for cells that belong to no run.
  void skipTo(std::uint32_t column) {
    while (line_.column + line_.columnCount < column) addBlank();
  }

  void setHeight(std::int32_t height) { line_.height = height; }
  bool isEmpty() const { return line_.spans.empty(); }
  bool endsBlank() const { return blanks_ != 0; }

  TextLine take() {
    line_.columnCount -= blanks_;
    return std::move(line_);
  }

 private:
  void placeBlanks() {
    const std::uint32_t most = blanksBetween_ == Blanks::AsOne ? 1 : blanks_;
    line_.spans.back().text.append(std::min(std::exchange(blanks_, 0), most), ' ');
  }

  Blanks blanksBetween_;
  TextLine line_;
  std::uint32_t blanks_ = 0;  // after the last character, in no span yet
};

}  // namespace korr::txsub
