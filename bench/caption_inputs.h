// SPDX-License-Identifier: MIT

// Recordings with captions in their video.
#pragma once

#include <vector>

#include "bench/inputs.h"

namespace korr::bench {

/// "captions-dense.ts": 300 MB of H.264 at 10 Mbit/s with captions in every picture.
/// "captions-mux.ts": 500 MB, the same among audio and null packets.
std::vector<Input> captionInputs();

}  // namespace korr::bench
