// SPDX-License-Identifier: MIT

// The seams through which parsers, writers and renderers are plugged together.
#pragma once

#include <cstdint>
#include <span>

#include "model/byte_buffer.h"
#include "model/media_time.h"
#include "model/subtitle.h"

namespace korr::encoding::subtitling::inline v2_1 {

/// Turns the payloads of one elementary stream into the subtitle on display. Not thread-safe;
/// errors are exceptions derived from std::exception, after which parsing may go on.
class ISubtitleParser {
 public:
  virtual ~ISubtitleParser() = default;

  /// Takes one payload (caption triplets, a DVB subtitle PES data field or a teletext PES data
  /// field). `data` may be null when `size` is 0. `size` in bytes. `time` is the presentation time,
  /// 0 when there is none. `discontinuity` says that the payload does not continue the previous.
  virtual void parse(const std::uint8_t* data, std::int64_t size, MediaTime time,
                     bool discontinuity) = 0;

  /// Whether the displayed subtitle differs from the one last yielded.
  virtual bool hasChanged() = 0;
};

/// Yields the subtitle displayed at a time; the second face of every parser.
class ISubtitleContainer {
 public:
  virtual ~ISubtitleContainer() = default;

  virtual Subtitle currentSubtitle(MediaTime time) = 0;
};

/// Writes documents about the subtitle of a container, which it does not own. Throws what the
/// container throws, and std::exception with a fixed text for a kind that it cannot express.
class ISubtitleConverter {
 public:
  virtual ~ISubtitleConverter() = default;

  /// Replaces the content of `out` by the document for the subtitle displayed at `time`.
  virtual void convert(ByteBuffer& out, MediaTime time) = 0;

  /// Replaces the content of `out` by a document that does not depend on a time.
  virtual void initialDocument(ByteBuffer& out) = 0;
};

/// Writes caption data into an outgoing stream.
class IClosedCaptionWriter {
 public:
  virtual ~IClosedCaptionWriter() = default;

  /// `triplets`: cc_data triplets (CEA-708, 4.4.1) of the picture shown at `time`.
  virtual void write(std::span<const std::uint8_t> triplets, MediaTime time) = 0;
};

}  // namespace korr::encoding::subtitling::inline v2_1
