// SPDX-License-Identifier: MIT

// What a broken stream can make a decoder keep: far beyond what any receiver has room for (EN 300
// 743, clause 5).
#pragma once

#include <cstddef>
#include <cstdint>

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

inline constexpr std::size_t kMostObjectBytes = 64U << 20;
inline constexpr std::size_t kMostObjectsInRegion = 16'384;
inline constexpr std::uint64_t kMostDisplayPixels = 16'777'216;

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
