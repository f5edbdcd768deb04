// SPDX-License-Identifier: MIT

// Text that pictures were read as, where it stood on the picture.
#pragma once

#include <vector>

#include "cues/text_layout.h"

namespace korr::txsub {

/// A screen for each block of lines that stand one below the other, in the order of reading.
std::vector<TextScreen> layOutPlaced(const encoding::subtitling::PlacedText& text);

}  // namespace korr::txsub
