// The recording with teletext.
#pragma once

#include <cstdint>
#include <vector>

namespace korr::samples {

/// 20 seconds of teletext without picture or sound: the same news from a harbour in nine languages,
/// a page each, one of them also for hearing-impaired viewers, and a page that no descriptor names.
std::vector<std::uint8_t> teletextTransportStream();

}  // namespace korr::samples
