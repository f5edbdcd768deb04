// SPDX-License-Identifier: MIT

// The page header, packet 0 (ETSI EN 300 706, 9.3.1).
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "teletext/packet.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {

struct PageHeader {
  std::uint32_t page = 0;  ///< two digits, units in the low four bits
  std::uint32_t s1 = 0;    ///< sub-code
  std::uint32_t s2 = 0;
  std::uint32_t s3 = 0;
  std::uint32_t s4 = 0;
  bool erasePage = false;            ///< C4
  bool newsflash = false;            ///< C5
  bool subtitle = false;             ///< C6
  bool suppressHeader = false;       ///< C7
  bool update = false;               ///< C8
  bool interruptedSequence = false;  ///< C9
  bool inhibitDisplay = false;       ///< C10
  bool magazineSerial = false;       ///< C11
  std::uint32_t nationalOption = 0;  ///< C12 in bit 2, C13, C14

  std::uint32_t subcode() const { return s4 << 12 | s3 << 8 | s2 << 4 | s1; }

  friend bool operator==(const PageHeader&, const PageHeader&) = default;
};

/// The first 8 bytes of a header's data.
PageHeader readPageHeader(std::span<const std::uint8_t, Packet::kDataSize> data);

/// The page number of a header's data; nothing where it has two wrong bits in a byte (8.2).
std::optional<std::uint32_t> readPageNumber(std::span<const std::uint8_t, Packet::kDataSize> data);

/// Whether a byte of a header has two wrong bits.
bool isHeaderDamaged(std::span<const std::uint8_t, Packet::kDataSize> data);

/// The display bytes of a header's data, columns 8 to 39 of row 0.
inline std::span<const std::uint8_t> headerText(
    std::span<const std::uint8_t, Packet::kDataSize> data) {
  return data.subspan<8>();
}

inline constexpr std::uint32_t kHeaderTextColumn = 8;

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
