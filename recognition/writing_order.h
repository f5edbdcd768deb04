// SPDX-License-Identifier: MIT

// From the order on the screen to the order of reading and back.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace korr::recognition {

/// Whether a text holds letters that are written from right to left.
bool isRightToLeft(const std::string& text);

/// The order in which the parts of a line stand on the screen, left to right: what is of a script
/// written from right to left is turned around, numbers and words of other scripts inside it keep
/// their order. The other way round it is the same.
std::vector<std::size_t> screenOrder(const std::vector<std::string>& parts);

/// Brackets open to the other side where the text runs to the left (Unicode, UAX #9, L4).
std::string mirrored(const std::string& letter);

/// One text in the order of reading out of the texts of glyphs, left to right.
std::string logicalOrder(const std::vector<std::string>& parts);

}  // namespace korr::recognition
