// SPDX-License-Identifier: MIT

// The recording with DVB subtitles.
#pragma once

#include <cstdint>
#include <vector>

namespace korr::samples {

/// 24 seconds without picture or sound. PID 0x200: English at 720 by 576 with objects of 2, 4 and 8
/// bits, colours, fills, and pages that end by themselves and by a clearing one. PID 0x201: French
/// for the hard of hearing at 1920 by 1080, in a display window.
std::vector<std::uint8_t> dvbTransportStream();

}  // namespace korr::samples
