// SPDX-License-Identifier: MIT

// Recorded samples and delivered buffers as lines of JSON; docs/formats.md describes both.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "readers/media_reader.h"

namespace korr::txsub {

/// The first line of recorded samples.
struct RecordHeader {
  SubtitleInputType type = SubtitleInputType::Teletext;
  /// The media type's format block. Teletext: the DVB descriptors of the elementary stream as the
  /// PMT carries them.
  std::optional<std::vector<std::uint8_t>> format;

  friend bool operator==(const RecordHeader&, const RecordHeader&) = default;
};

/// One buffer that a chain delivered.
struct DeliveredBuffer {
  MediaTime start = 0;
  MediaTime stop = 0;
  bool sync = false;
  bool discontinuity = false;
  std::span<const std::uint8_t> data;
};

/// The stream's name in headers: "teletext", "dvb" or "captions".
std::string_view streamName(SubtitleInputType type);

/// Reads one line, with or without its line end. Throws util::TessaryException that says what is
/// wrong with it.
RecordHeader parseHeader(std::string_view line);
InputSample parseSample(std::string_view line);

/// Writes one line, its line feed included.
std::string formatHeader(const RecordHeader& header);
std::string formatSample(const InputSample& sample);
std::string formatDelivered(const DeliveredBuffer& buffer);
std::string formatEndOfStream();

}  // namespace korr::txsub
