// SPDX-License-Identifier: MIT
#include "readers/video/video_syntax.h"

namespace korr::txsub {
namespace {

/// Start code values: ISO/IEC 13818-2, table 6-1.
UnitTraits mpeg2Traits(std::span<const std::uint8_t> head) {
  switch (const std::uint8_t startCode = head[0]) {
    case 0x00:  // picture_start_code
    case 0xB3:  // sequence_header_code
    case 0xB8:  // group_start_code
      return {.beginsAccessUnit = true};
    case 0xB2:  // user_data_start_code
      return {.carriesCaptions = true};
    default:
      return {.slice = startCode >= 0x01 && startCode <= 0xAF};
  }
}

/// The first bit of the slice header: first_mb_in_slice is 0 as ue(v), or
/// first_slice_segment_in_pic_flag is set.
bool isFirstSlice(std::span<const std::uint8_t> head, std::size_t headerBytes) {
  return head.size() > headerBytes && (head[headerBytes] & 0x80) != 0;
}

/// nal_unit_type: H.264, table 7-1; what may begin an access unit: 7.4.1.2.3.
UnitTraits h264Traits(std::span<const std::uint8_t> head) {
  switch (head[0] & 0x1F) {
    case 1:  // slices: of a non-IDR picture, data partition A, of an IDR picture
    case 2:
    case 5:
      return {.slice = true, .beginsAccessUnit = isFirstSlice(head, 1)};
    case 6:  // SEI
      return {.beginsAccessUnit = true, .carriesCaptions = true};
    case 7:  // sequence and picture parameter sets, access unit delimiter
    case 8:
    case 9:
    case 14:  // to 18: prefix, subset sequence parameter set, reserved
    case 15:
    case 16:
    case 17:
    case 18:
      return {.beginsAccessUnit = true};
    default:
      return {};
  }
}

/// nal_unit_type: H.265, table 7-1; what may begin an access unit: 7.4.2.4.4.
UnitTraits hevcTraits(std::span<const std::uint8_t> head) {
  const unsigned type = head[0] >> 1 & 0x3F;
  if (type < 32) return {.slice = true, .beginsAccessUnit = isFirstSlice(head, 2)};
  switch (type) {
    case 39:  // prefix SEI
      return {.beginsAccessUnit = true, .carriesCaptions = true};
    case 40:  // suffix SEI
      return {.carriesCaptions = true};
    case 32:  // video, sequence and picture parameter sets, access unit delimiter
    case 33:
    case 34:
    case 35:
      return {.beginsAccessUnit = true};
    default:
      return {.beginsAccessUnit = (type >= 41 && type <= 44) || (type >= 48 && type <= 55)};
  }
}

}  // namespace

UnitTraits unitTraits(VideoCodec codec, std::span<const std::uint8_t> head) {
  if (head.empty()) return {};
  switch (codec) {
    case VideoCodec::Mpeg2:
      return mpeg2Traits(head);
    case VideoCodec::H264:
      return h264Traits(head);
    case VideoCodec::Hevc:
      return hevcTraits(head);
  }
  return {};
}

}  // namespace korr::txsub
