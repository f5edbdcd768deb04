// SPDX-License-Identifier: MIT

// The rows of a caption memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "model/subtitle.h"

namespace korr::encoding::subtitling::closed_caption::inline v2 {

/// Rows in ascending order of their numbers, 1 to 15 from top to bottom; rolling up can carry
/// numbers below 1.
using CaptionMemory = std::vector<CaptionText::TextRow>;

inline constexpr std::int32_t kBottomRow = 15;

/// The rows that a roll-up mode shows, 0 for a mode that does not roll up.
std::size_t rollUpDepth(CaptionMode mode);

inline bool isRollUp(CaptionMode mode) {
  return rollUpDepth(mode) != 0;
}

/// The row of that number. When there is none, an empty one in `mode` is made, which moves the
/// others in memory.
CaptionText::TextRow& rowAt(CaptionMemory& memory, std::int32_t number, CaptionMode mode);

/// Rolls `memory` up by one row: removes rows that hold no character, moves each of the others one
/// row higher, and keeps of those the lowest, as many as `mode` shows. Does nothing when `mode`
/// does not roll up.
void rollUp(CaptionMemory& memory, CaptionMode mode);

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
