// SPDX-License-Identifier: MIT

// Presentation graphics: the subtitles of Blu-ray discs, as a player shows them.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "disc_subtitle/pgs_memory.h"
#include "log/logger.h"
#include "model/display.h"

namespace korr::encoding::subtitling::disc::inline v2_1 {

/// Units are one or more segments, each with its header; the time of a composition is that of its
/// unit, and it is shown when its END segment, or the next composition, has come.
class PgsDisplayDecoder final : public IDisplayDecoder {
 public:
  /// Neither is owned.
  PgsDisplayDecoder(IDisplayListener& listener, log::ILogger* logger)
      : listener_(listener), logger_(logger) {}

  void decode(std::span<const std::uint8_t> unit, MediaTime time) override;
  void finish(MediaTime end) override;

 private:
  struct Pending {
    PgsComposition composition;
    MediaTime time = 0;
  };

  void take(const PgsSegment& segment, MediaTime time);
  void begin(std::span<const std::uint8_t> body, MediaTime time);
  void present();
  SubtitleBitmap paint(const PgsComposition& composition, MediaTime time);
  void show(MediaTime time, SubtitleBitmap bitmap);
  void warn(const std::string& what);

  IDisplayListener& listener_;
  log::ILogger* logger_;
  PgsMemory memory_;
  std::optional<Pending> pending_;
  SubtitleBitmap shown_;        // the last that was told
  std::int32_t pageState_ = 0;  // of the last picture
  MediaTime lastTime_ = 0;      // that was told
};

}  // namespace korr::encoding::subtitling::disc::inline v2_1
