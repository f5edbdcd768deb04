// SPDX-License-Identifier: MIT

// The one clock of the system.
#pragma once

#include <cstdint>

namespace korr::encoding::subtitling::inline v2_1 {

/// A point in time or a duration: an unsigned count of 100 nanoseconds.
using MediaTime = std::uint64_t;

inline constexpr MediaTime kSecond = 10'000'000;
inline constexpr MediaTime kMillisecond = 10'000;
inline constexpr MediaTime kDay = 24 * 60 * 60 * kSecond;

/// Ticks of the 90 kHz MPEG system clock (ISO/IEC 13818-1, 2.4.2) as media time, rounded down.
constexpr MediaTime fromTicks90k(std::uint64_t ticks) {
  return ticks / 9 * 1000 + ticks % 9 * 1000 / 9;
}

}  // namespace korr::encoding::subtitling::inline v2_1
