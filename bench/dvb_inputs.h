// SPDX-License-Identifier: MIT

// Recordings of DVB subtitles.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "bench/inputs.h"

namespace korr::bench {

/// "dvb.ts": 100 MB, 12,000 pages of two lines at 720 by 576.
std::vector<Input> dvbInputs();

/// The data field of a page with two lines of text in 4-bit objects, lines as high as it is usual
/// at the size of the display.
std::vector<std::uint8_t> dvbPage(std::uint32_t displayWidth, std::uint32_t displayHeight,
                                  std::string_view upper, std::string_view lower,
                                  std::uint8_t version = 0);

}  // namespace korr::bench
