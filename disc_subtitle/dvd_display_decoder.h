// SPDX-License-Identifier: MIT

// Sub-pictures: the subtitles of DVDs, as a player shows them.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "disc_subtitle/dvd_setup.h"
#include "disc_subtitle/sub_picture.h"
#include "log/logger.h"
#include "model/display.h"

namespace korr::encoding::subtitling::disc::inline v2_1 {

/// Units are sub-picture units, or pieces of them in their order. A unit says when its picture
/// comes, changes its look and goes, unless the next unit comes before that. Without a palette
/// letters are white and what is around them is dark, as far as that can be told.
class DvdDisplayDecoder final : public IDisplayDecoder {
 public:
  /// Neither is owned.
  DvdDisplayDecoder(const DvdSetup& setup, IDisplayListener& listener, log::ILogger* logger)
      : setup_(setup), listener_(listener), logger_(logger) {}

  void decode(std::span<const std::uint8_t> unit, MediaTime time) override;
  void settle(MediaTime until) override;
  void finish(MediaTime end) override;

 private:
  struct Change {
    MediaTime time = 0;
    SubtitleBitmap bitmap;  // not visible: it goes
  };

  void take(std::span<const std::uint8_t> unit, MediaTime time);
  SubtitleBitmap paint(const SubPicture& picture, const SubPictureStyle& style,
                       const std::vector<std::uint8_t>& codes);
  DvdPalette paletteFor(const SubPictureStyle& style) const;
  void tell(Change change);
  void warn(const std::string& what);

  DvdSetup setup_;
  IDisplayListener& listener_;
  log::ILogger* logger_;
  std::vector<std::uint8_t> unit_;  // as far as it has come
  MediaTime unitTime_ = 0;
  std::deque<Change> changes_;  // still to come
  std::int32_t pageState_ = 0;  // of the last picture
  MediaTime lastTime_ = 0;      // that was told
  bool isShown_ = false;
};

}  // namespace korr::encoding::subtitling::disc::inline v2_1
