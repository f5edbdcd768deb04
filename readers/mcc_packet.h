// SPDX-License-Identifier: MIT

// Lines of ancillary data as MacCaption files write them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "util/time_code.h"

namespace korr::txsub {

/// What a letter after F stands for in a line of data; nothing for other characters.
std::span<const std::uint8_t> mccLetter(char letter);

/// The bytes of a line of data, hexadecimal digits and letters. Nothing when anything else stands
/// there, or half a byte.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> expandMcc(std::string_view data);

/// The shortest writing of these bytes.
std::string compressMcc(std::span<const std::uint8_t> bytes);

/// What an ancillary packet says of one picture.
struct AncillaryCaptions {
  std::vector<std::uint8_t> triplets;      ///< as in cc_data()
  std::optional<util::TimeCodeRate> rate;  ///< as cdp_frame_rate has it
};

/// Reads an ancillary data packet from its DID on: a caption distribution packet (SMPTE ST 334-2)
/// or a pair of line 21 (SMPTE ST 334-1). No triplets for packets of other kinds; nothing for one
/// that is damaged.
[[nodiscard]] std::optional<AncillaryCaptions> readAncillaryPacket(
    std::span<const std::uint8_t> packet);

/// An ancillary data packet that carries `triplets`, 31 at most, in a caption distribution packet
/// with this sequence number.
std::vector<std::uint8_t> ancillaryPacket(std::span<const std::uint8_t> triplets,
                                          const util::TimeCodeRate& rate, std::uint16_t sequence);

}  // namespace korr::txsub
