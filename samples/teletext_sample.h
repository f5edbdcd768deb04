// SPDX-License-Identifier: MIT

// The recording with teletext.
#pragma once

#include <cstdint>
#include <vector>

namespace korr::samples {

/// 20 seconds of teletext without picture or sound: the same news from a harbour in eight
/// languages, a page each, German also for hearing-impaired viewers, and an English page that no
/// descriptor names.
std::vector<std::uint8_t> teletextTransportStream();

}  // namespace korr::samples
