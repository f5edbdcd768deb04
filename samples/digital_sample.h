// SPDX-License-Identifier: MIT

// The sample with digital captions.
#pragma once

#include <cstdint>
#include <vector>

namespace korr::samples {

/// Ten seconds of H.264 with two services of CEA-708, English and French with accents of G2 in
/// service 1, Korean in EUC-KR in service 2, and nothing in line 21.
std::vector<std::uint8_t> digitalTransportStream();

}  // namespace korr::samples
