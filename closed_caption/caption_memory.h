// The rows of a caption memory.
#pragma once

#include <cstdint>
#include <map>

#include "core/subtitle.h"

namespace korr::encoding::subtitling::closed_caption::inline v2 {

/// Rows by number, 1 to 15 from top to bottom; rolling up can carry numbers below 1.
using CaptionMemory = std::map<std::int32_t, CaptionText::TextRow>;

inline constexpr std::int32_t kBottomRow = 15;

/// The rows that a roll-up mode shows, 0 for a mode that does not roll up.
std::size_t rollUpDepth(CaptionMode mode);

inline bool isRollUp(CaptionMode mode) {
  return rollUpDepth(mode) != 0;
}

/// `memory` rolled up by one row: without rows that hold no character, each of the others one row
/// higher, and of those the lowest as many as `mode` shows. Unchanged when `mode` does not roll up.
CaptionMemory rollUpSnapshot(const CaptionMemory& memory, CaptionMode mode);

/// The memory as a screen, its rows numbered.
CaptionText toScreen(const CaptionMemory& memory);

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
