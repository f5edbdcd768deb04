// SPDX-License-Identifier: MIT

// Text that runs from right to left: from the order on the screen to the order of reading.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace korr::txsub {

enum class TextDirection { LeftToRight, RightToLeft };

/// How a line reads.
struct LogicalOrder {
  TextDirection direction = TextDirection::LeftToRight;  ///< of the line as a whole
  std::vector<std::size_t> places;                       ///< of its characters, in reading order
  std::vector<bool> isMirrored;                          ///< for each place: a bracket that turned
};

/// The order in which `characters`, which stand from left to right as on a screen, are read: the
/// rules of the Unicode bidirectional algorithm (UAX #9: W1 to W7, N0 to N2, I1, I2, L2, L4) for
/// text without controls, turned around: a player shows what is read so as it stood. The line reads
/// from right to left where at least a quarter of its letters are Hebrew or Arabic.
LogicalOrder logicalOrderOf(std::u32string_view characters);

/// The direction of the first letter: what players take for that of the line. Nothing without one.
std::optional<TextDirection> startDirection(std::u32string_view characters);

/// Whether a character makes a line need this: a Hebrew or Arabic letter.
bool isRightToLeft(char32_t character);

/// Whether a character belongs to the one before it: a diacritic.
bool isCombining(char32_t character);

/// The bracket of the other side, or the character itself.
char32_t mirrored(char32_t character);

}  // namespace korr::txsub
