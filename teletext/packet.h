// SPDX-License-Identifier: MIT

// Teletext packets in the PES data field (ETSI EN 300 472, 4.2).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "teletext/hamming.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {

/// One packet: the magazine and row address and the 40 bytes after it, raw as they arrive.
struct Packet {
  static constexpr std::size_t kDataSize = 40;

  std::uint32_t magazine = 0;  ///< 0 to 7, 0 for magazine 8
  std::uint32_t number = 0;    ///< 0 to 31
  std::span<const std::uint8_t, kDataSize> data;
};

/// Calls `take(const Packet&)` for every EBU teletext packet of a PES data field for whose magazine
/// `wants(magazine)` answers true. Damage is passed over: an unknown data_identifier drops the
/// payload, other data units are skipped, and so is a unit that is cut short. A packet whose
/// address has two wrong bits is dropped where `dropsDamagedAddresses` (EN 300 706, 8.2).
template <class Wants, class Take>
void forEachPacket(std::span<const std::uint8_t> payload, bool dropsDamagedAddresses,
                   const Wants& wants, const Take& take) {
  constexpr std::size_t kUnitSize = 46;  // whatever data_unit_length says
  constexpr std::uint8_t kNonSubtitle = 0x02;
  constexpr std::uint8_t kSubtitle = 0x03;
  if (payload.empty() || payload[0] < 0x10 || payload[0] > 0x1F) return;

  for (auto units = payload.subspan(1); units.size() >= kUnitSize;
       units = units.subspan(kUnitSize)) {
    // data_unit_id, data_unit_length, field and line, framing code, address (2), data.
    if (units[0] != kNonSubtitle && units[0] != kSubtitle) continue;
    const std::uint32_t low = decodeHamming84(units[4]);
    const std::uint32_t magazine = low & 7;
    if (!wants(magazine)) continue;
    if (dropsDamagedAddresses && !(kIsHamming84[units[4]] && kIsHamming84[units[5]])) continue;
    const std::uint32_t number = decodeHamming84(units[5]) * 2u + (low >> 3);
    take(Packet{magazine, number, units.template subspan<6, Packet::kDataSize>()});
  }
}

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
