// SPDX-License-Identifier: MIT

// The pages of the last seconds.
#pragma once

#include <cstddef>
#include <map>

#include "model/media_time.h"
#include "model/subtitle.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

/// Pages by start time. Holds at most 256 MB of pixels: beyond that the oldest pages go first.
class PageHistory {
 public:
  /// Takes the place of a page with the same start.
  void store(SubtitleBitmap page);

  /// Drops the pages that start before `time`.
  void eraseBefore(MediaTime time);

  /// The page with the latest start not after `time`, if it has not ended by then; else the empty
  /// bitmap. Shares the pixels.
  SubtitleBitmap at(MediaTime time) const;

 private:
  using Pages = std::map<MediaTime, SubtitleBitmap>;

  void eraseFirst();

  static constexpr std::size_t kMostPixelBytes = 256U << 20;

  Pages pages_;
  std::size_t pixelBytes_ = 0;
};

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
