// SPDX-License-Identifier: MIT

// Lines that stand together on the picture, and how they are aligned.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "cues/text_layout.h"

namespace korr::txsub {

/// Which neighbours a group takes in.
enum class GroupHeights { Any, Equal };

/// Neighbouring lines of one direction. What they are aligned by is kept, because players' fonts
/// are narrower than the cells that the lines were laid out in.
struct TextGroup {
  std::span<const TextLine> lines;  ///< never empty
  TextAlign align = TextAlign::Start;
  double column = 0;  ///< where the alignment's edge or centre is

  bool isRightToLeft() const;
};

/// "start", "center" or "end", as WebVTT and TTML both say it; "left" and "right" where lines read
/// from right to left, which start at the right.
const char* alignmentName(const TextGroup& group);

/// The groups of a screen, top to bottom; they refer to its lines.
std::vector<TextGroup> groupsOf(const TextScreen& screen, GroupHeights heights);

/// A number as both formats write it, with at most two decimals: "84.67", "50".
std::string decimal(double number);

}  // namespace korr::txsub
