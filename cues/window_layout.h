// SPDX-License-Identifier: MIT

// What digital captions look like on the picture.
#pragma once

#include <vector>

#include "cues/text_layout.h"

namespace korr::txsub {

/// A screen for each window that holds text, in the order of reading: the topmost first, those that
/// begin at one height from left to right. The lines of windows that print down or up are their
/// columns, one below the other; text printed from right to left is in the order of reading.
std::vector<TextScreen> layOutWindows(const encoding::subtitling::WindowText& text);

}  // namespace korr::txsub
