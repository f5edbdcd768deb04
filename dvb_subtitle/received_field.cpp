// SPDX-License-Identifier: MIT
#include "dvb_subtitle/received_field.h"

#include <algorithm>
#include <cstddef>

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {
namespace {

using Bytes = std::span<const std::uint8_t>;

// EN 300 743, 7.1 and 7.2.
constexpr std::uint8_t kDataIdentifier = 0x20;
constexpr std::uint8_t kSubtitleStreamId = 0x00;
constexpr std::uint8_t kSyncByte = 0x0F;
constexpr std::uint8_t kEndMarker = 0xFF;
constexpr std::size_t kFieldHeader = 2;
constexpr std::size_t kSegmentHeader = 6;

bool beginsField(Bytes bytes) {
  return bytes.size() >= kFieldHeader && bytes[0] == kDataIdentifier &&
         bytes[1] == kSubtitleStreamId;
}

// The size of the whole segment that `bytes` begin with; 0 when they do not.
std::size_t segmentSize(Bytes bytes) {
  if (bytes.size() < kSegmentHeader || bytes[0] != kSyncByte) return 0;
  const std::size_t size = kSegmentHeader + bytes[4] * 256U + bytes[5];
  return size <= bytes.size() ? size : 0;
}

// Whether a segment that is followed properly begins here, behind bytes that were none.
bool isResumed(Bytes bytes) {
  const std::size_t size = segmentSize(bytes);
  if (size == 0 || bytes[1] < 0x10) return false;
  const Bytes next = bytes.subspan(size);
  return next.empty() || next[0] == kSyncByte || next[0] == kEndMarker;
}

bool isZero(Bytes bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0; });
}

// Passes over what is no segment, and says so.
Bytes resume(Bytes unit, Bytes rest, std::string& damage) {
  std::size_t lost = 1;
  while (lost < rest.size() && !isResumed(rest.subspan(lost))) ++lost;
  if (damage.empty()) {
    damage = "data field of DVB subtitles: " + std::to_string(lost) + " bytes at offset " +
             std::to_string(unit.size() - rest.size()) + " are no whole segment and passed over";
  }
  return rest.subspan(lost);
}

}  // namespace

ReceivedField readField(Bytes unit) {
  ReceivedField field;
  if (!beginsField(unit)) {
    field.damage = "data field of DVB subtitles passed over: it does not begin with 0x20 0x00";
    return field;
  }
  Bytes rest = unit.subspan(kFieldHeader);
  while (!rest.empty()) {
    if (const std::size_t size = segmentSize(rest)) {
      field.segments.push_back(rest.first(size));
      rest = rest.subspan(size);
    } else if (rest[0] == kEndMarker) {
      rest = rest.subspan(1);
      if (!beginsField(rest)) break;  // padding
      rest = rest.subspan(kFieldHeader);
    } else if (isZero(rest)) {
      break;
    } else {
      rest = resume(unit, rest, field.damage);
    }
  }
  return field;
}

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
