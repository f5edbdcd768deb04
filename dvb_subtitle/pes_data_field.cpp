// SPDX-License-Identifier: MIT
#include "dvb_subtitle/pes_data_field.h"

#include <algorithm>
#include <utility>

#include "dvb_subtitle/errors.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {
namespace {

// EN 300 743, 7.1 and 7.2.1.
constexpr std::uint8_t kDataIdentifier = 0x20;
constexpr std::uint8_t kSubtitleStreamId = 0x00;
constexpr std::uint8_t kSyncByte = 0x0F;
constexpr std::uint8_t kEndOfPesDataFieldMarker = 0xFF;
constexpr std::size_t kSegmentHeaderBytes = 6;  // segment_length is the last two

}  // namespace

std::vector<Segment> PesDataFieldSplitter::split(std::span<const std::uint8_t> bytes) {
  std::vector<Segment> segments;
  while (!bytes.empty()) {
    if (state_ != State::InSegment) {
      takeFieldByte(bytes.front());
      bytes = bytes.subspan(1);
      continue;
    }
    const auto taken = bytes.first(std::min(missing(), bytes.size()));
    segment_.insert(segment_.end(), taken.begin(), taken.end());
    bytes = bytes.subspan(taken.size());
    if (missing() != 0) continue;
    segments.push_back(std::exchange(segment_, {}));
    state_ = State::SyncByteOrEnd;
  }
  return segments;
}

// One byte outside a segment.
void PesDataFieldSplitter::takeFieldByte(std::uint8_t byte) {
  switch (state_) {
    case State::DataIdentifier:
      if (byte != kDataIdentifier) throw DataFieldError("expected 0x20 in PES_Data_Field");
      state_ = State::SubtitleStreamId;
      return;
    case State::SubtitleStreamId:
      if (byte != kSubtitleStreamId) throw DataFieldError("expected 0x00 in PES_Data_Field");
      state_ = State::SyncByteOrEnd;
      return;
    case State::SyncByteOrEnd:
      if (byte == kSyncByte) {
        segment_.assign(1, byte);
        state_ = State::InSegment;
      } else if (byte == kEndOfPesDataFieldMarker) {
        state_ = State::DataIdentifier;
      } else {
        throw DataFieldError("expected 0x0F or 0xFF in PES_Data_Field");
      }
      return;
    case State::InSegment:
      return;
  }
}

// How many bytes the segment, or first its header, still lacks.
std::size_t PesDataFieldSplitter::missing() const {
  if (segment_.size() < kSegmentHeaderBytes) return kSegmentHeaderBytes - segment_.size();
  const std::size_t segmentLength = segment_[4] * 256U + segment_[5];
  return kSegmentHeaderBytes + segmentLength - segment_.size();
}

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
