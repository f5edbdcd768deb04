// SPDX-License-Identifier: MIT

// Video elementary streams with captions, small enough to read in a test.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "readers/video/video_syntax.h"

namespace korr::encoders {

using Bytes = std::vector<std::uint8_t>;

/// `parts` one after the other.
Bytes join(std::initializer_list<std::span<const std::uint8_t>> parts);

/// cc_data triplets that carry `text` in field 1, two characters a triplet, with parity.
Bytes textTriplets(std::string_view text);

/// ATSC user data from "GA94" on, around cc_data triplets. `count` may lie; -1 counts them.
Bytes atscUserData(std::span<const std::uint8_t> triplets, int count = -1);

/// An SEI message. `size` may lie; -1 is the size of the payload.
Bytes seiMessage(std::size_t type, std::span<const std::uint8_t> payload, int size = -1);

/// The SEI message around ATSC user data.
Bytes captionSeiMessage(std::span<const std::uint8_t> triplets);

/// An SEI unit with start code and emulation prevention, around messages.
Bytes seiUnit(txsub::VideoCodec codec, std::span<const std::uint8_t> messages);

/// The sequence and picture parameter set of the still picture below.
Bytes h264ParameterSets();

/// One coded picture with everything that belongs to it, in coding order.
struct Picture {
  txsub::VideoCodec codec = txsub::VideoCodec::H264;
  Bytes triplets{};           ///< none: a picture without captions
  int temporalReference = 0;  ///< counts the pictures of a group
  bool beginsGroup = false;   ///< sequence and group headers (MPEG-2) or parameter sets (H.264)
  bool still = false;         ///< a grey picture that decoders accept (not HEVC); else:
  std::size_t slices = 2;
  std::size_t sliceBytes = 40;  ///< of each slice's data, which means nothing
};
Bytes encode(const Picture& picture);

}  // namespace korr::encoders
