// SPDX-License-Identifier: MIT

// From what was read in a picture to the text of a subtitle.
#pragma once

#include "model/placed_text.h"
#include "recognition/recognised_text.h"

namespace korr::txsub {

/// Places in percent of the display.
encoding::subtitling::PlacedText placedTextOf(const recognition::RecognisedPicture& picture);

/// Whether both say the same in the same colours at nearly the same place.
bool saySame(const encoding::subtitling::PlacedText& left,
             const encoding::subtitling::PlacedText& right);

}  // namespace korr::txsub
