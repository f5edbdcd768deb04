// SPDX-License-Identifier: MIT

// The letters of a line as runs of text in the order of reading.
#pragma once

#include <string>
#include <vector>

#include "recognition/recognised_text.h"

namespace korr::recognition {

/// `texts` stand from left to right, each in its style; neighbours of one style are joined, and a
/// blank goes with the letters before it. What a line as a whole tells better than one shape is
/// mended: brackets that face the wrong way where text runs to the left, a brace that closes a
/// parenthesis, the comma of Arabic.
std::vector<TextRun> runsInOrder(const std::vector<std::string>& texts,
                                 const std::vector<TextRun>& styles);

}  // namespace korr::recognition
