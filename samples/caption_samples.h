// SPDX-License-Identifier: MIT

// The recordings with captions.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "readers/video/video_syntax.h"

namespace korr::samples {

using Bytes = std::vector<std::uint8_t>;

/// 24 seconds of grey video with captions in its pictures: CC1 in English (pop-on, roll-up and
/// paint-on, italics and colours), CC2 in Spanish, CC3 in French.
Bytes captionTransportStream(txsub::VideoCodec codec);

/// CC1 of the same captions as an SCC file with drop-frame time code from 01:00:00;00 on.
std::string captionScc();

}  // namespace korr::samples
