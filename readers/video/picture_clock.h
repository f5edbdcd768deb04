// SPDX-License-Identifier: MIT

// When a picture is shown that has no time of its own.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "model/media_time.h"

namespace korr::txsub {

using encoding::subtitling::MediaTime;

/// Gives every MPEG-2 picture a time: its PTS, or else its place in the group of pictures as
/// temporal_reference tells it (ISO/IEC 13818-2, 6.3.9), counted from the last picture with a PTS.
/// In the other codecs a picture without a PTS takes the time of the one before it: it is nearly
/// always the second field of the same frame.
class PictureClock {
 public:
  /// The bytes after the sequence_header_code, as far as frame_rate_code at least.
  void onSequenceHeader(std::span<const std::uint8_t> header);
  /// A group of pictures begins: temporal_reference counts from 0 again.
  void onGroupOfPictures();
  /// The bytes after the picture_start_code.
  void onPictureHeader(std::span<const std::uint8_t> header);

  /// The time of the picture whose header was seen last. Nothing as long as no picture had a PTS.
  std::optional<MediaTime> timeOf(std::optional<MediaTime> pts);

 private:
  MediaTime shownAt(int temporalReference) const;

  std::optional<MediaTime> anchorTime_;  // of a picture of this group
  int anchorReference_ = 0;              // and its temporal_reference
  int temporalReference_ = 0;            // of the current picture; stays 0 in other codecs
  MediaTime lastShown_ = 0;              // the latest time of this group
  MediaTime frameDuration_ = encoding::subtitling::kSecond / 25;
};

}  // namespace korr::txsub
