// SPDX-License-Identifier: MIT

// PES data fields to segments.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

/// The bytes of one segment, from its sync_byte on: 6 + segment_length of them.
using Segment = std::vector<std::uint8_t>;

/// Cuts PES data fields (EN 300 743, 7.1) into whole segments. A field may go on from one call to
/// the next, even within a segment.
class PesDataFieldSplitter {
 public:
  /// The segments that `bytes` complete. Throws DataFieldError at a byte out of place: the segments
  /// of the call are lost, and the next call begins in the state of the failure.
  std::vector<Segment> split(std::span<const std::uint8_t> bytes);

  /// The next byte begins a data field.
  void reset() { state_ = State::DataIdentifier; }

 private:
  enum class State { DataIdentifier, SubtitleStreamId, SyncByteOrEnd, InSegment };

  void takeFieldByte(std::uint8_t byte);
  std::size_t missing() const;

  State state_ = State::DataIdentifier;
  Segment segment_;
};

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
