// SPDX-License-Identifier: MIT

#include "readers/video/random_access.h"

#include "readers/video/start_code.h"

namespace korr::txsub {
namespace {

enum class Verdict { RandomAccess, None, Unknown };

// Start code values: ISO/IEC 13818-2, table 6-1.
Verdict judgeMpeg2(std::uint8_t startCode) {
  if (startCode == 0xB3) return Verdict::RandomAccess;  // sequence_header_code
  return startCode == 0x00 ? Verdict::None : Verdict::Unknown;
}

// nal_unit_type: H.264, table 7-1.
Verdict judgeH264(std::uint8_t header) {
  switch (header & 0x1F) {
    case 5:  // slice of an IDR picture
    case 7:  // sequence parameter set
      return Verdict::RandomAccess;
    case 1:  // slices of other pictures
    case 2:
      return Verdict::None;
    default:
      return Verdict::Unknown;
  }
}

// nal_unit_type: H.265, table 7-1.
Verdict judgeHevc(std::uint8_t header) {
  const unsigned type = header >> 1 & 0x3F;
  if (type < 16) return Verdict::None;
  const bool isIrap = type <= 23;
  const bool isParameterSet = type == 32 || type == 33;  // video, sequence
  return isIrap || isParameterSet ? Verdict::RandomAccess : Verdict::Unknown;
}

Verdict judge(VideoCodec codec, std::uint8_t header) {
  switch (codec) {
    case VideoCodec::Mpeg2:
      return judgeMpeg2(header);
    case VideoCodec::H264:
      return judgeH264(header);
    case VideoCodec::Hevc:
      break;
  }
  return judgeHevc(header);
}

}  // namespace

bool beginsRandomAccess(VideoCodec codec, std::span<const std::uint8_t> start) {
  for (std::size_t at = 0;;) {
    at = findStartCode(start, at) + kStartCodePrefix;
    if (at >= start.size()) return false;
    const Verdict verdict = judge(codec, start[at]);
    if (verdict != Verdict::Unknown) return verdict == Verdict::RandomAccess;
  }
}

}  // namespace korr::txsub
