// SPDX-License-Identifier: MIT

// Recordings with teletext.
#pragma once

#include <vector>

#include "bench/inputs.h"

namespace korr::bench {

/// "teletext-dense.ts": 100 MB of nothing but teletext, subtitles on page 888 among a hundred
/// pages. "teletext-mux.ts": 500 MB of video, 0.75 % of the packets are teletext.
std::vector<Input> teletextInputs();

}  // namespace korr::bench
