// SPDX-License-Identifier: MIT

// AV1 video with captions, small enough to read in a test.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace korr::encoders {

using Bytes = std::vector<std::uint8_t>;

/// Types of open bitstream units (AV1, 6.2.2).
enum class ObuType : std::uint8_t {
  SequenceHeader = 1,
  TemporalDelimiter = 2,
  Metadata = 5,
  Frame = 6,
};

/// A unit with or without its size. `size` may lie; -1 is the size of the payload.
Bytes obu(ObuType type, std::span<const std::uint8_t> payload, bool hasSize = true, int size = -1);

/// The sequence header of grey stills of 64x48, as a unit.
Bytes av1SequenceHeader();

/// A metadata unit of ITU-T T.35 with ATSC user data around cc_data triplets. `count` may lie, as
/// in `atscUserData`.
Bytes av1CaptionUnit(std::span<const std::uint8_t> triplets, int count = -1);

/// A temporal unit: delimiter, sequence header, captions if there are any, and a frame whose data
/// means nothing.
Bytes av1TemporalUnit(std::span<const std::uint8_t> triplets);

}  // namespace korr::encoders
