// SPDX-License-Identifier: MIT

// Packets by their numbers, and pages by theirs.
#pragma once

#include <cstdint>

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {

// EN 300 706, 7.2 and 9.1.
inline constexpr std::uint32_t kHeaderPacket = 0;
inline constexpr std::uint32_t kLastRowPacket = 24;
inline constexpr std::uint32_t kEnhancementPacket = 26;
inline constexpr std::uint32_t kPageEnhancementPacket = 28;
inline constexpr std::uint32_t kMagazineEnhancementPacket = 29;

/// The magazine of a page number such as 0x888 as it is on air, where magazine 8 is 0.
constexpr std::uint32_t magazineOf(std::uint32_t page) {
  const std::uint32_t magazine = page / 256;
  return magazine == 8 ? 0 : magazine;
}

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
