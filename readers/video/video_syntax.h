// SPDX-License-Identifier: MIT

// What the first bytes of a unit of video data tell: enough to find pictures and their captions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace korr::txsub {

enum class VideoCodec {
  Mpeg2,  ///< ISO/IEC 13818-2, and 11172-2 alike
  H264,   ///< ISO/IEC 14496-10
  Hevc,   ///< ISO/IEC 23008-2
};

/// The part that the bytes between two start codes play.
struct UnitTraits {
  bool slice = false;             ///< coded picture data
  bool beginsAccessUnit = false;  ///< cannot follow a slice of the same picture
  bool carriesCaptions = false;   ///< SEI or user data
};

/// How many bytes after the start code prefix `unitTraits` looks at.
constexpr std::size_t unitHeadBytes(VideoCodec codec) {
  switch (codec) {
    case VideoCodec::Mpeg2:
      return 5;  // start code value, then as far as frame_rate_code
    case VideoCodec::H264:
      return 2;  // NAL unit header, first_mb_in_slice
    case VideoCodec::Hevc:
      return 3;  // NAL unit header, first_slice_segment_in_pic_flag
  }
  return 0;
}

/// Bytes of the header in front of the payload of a unit.
constexpr std::size_t unitHeaderBytes(VideoCodec codec) {
  return codec == VideoCodec::Hevc ? 2 : 1;
}

/// `head`: the first bytes after the start code prefix; may be fewer when the unit is shorter.
UnitTraits unitTraits(VideoCodec codec, std::span<const std::uint8_t> head);

}  // namespace korr::txsub
