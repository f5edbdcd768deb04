// SPDX-License-Identifier: MIT

// Closed captions: the parser of cc_data triplets.
#pragma once

#include "closed_caption/caption_decoder.h"
#include "closed_caption/cc_data.h"
#include "log/logger.h"
#include "model/interfaces.h"

namespace korr::encoding::subtitling::closed_caption::inline v2 {

/// Decodes one of the services CC1 to CC4. Not thread-safe; throws nothing but std::bad_alloc.
class ClosedCaptionParser final : public ISubtitleParser, public ISubtitleContainer {
 public:
  /// `logger` takes warnings; may be null, not owned.
  explicit ClosedCaptionParser(CaptionService service, bool publishEachPair = false,
                               log::ILogger* logger = nullptr)
      : selector_(service), decoder_(publishEachPair), logger_(logger) {}

  /// `data`: triplets as in cc_data() (CEA-708, 4.4.1); bytes after the last whole one are ignored.
  void parse(const std::uint8_t* data, std::int64_t size, MediaTime time,
             bool discontinuity) override;

  bool hasChanged() override { return decoder_.hasChanged(); }

  /// The screen, for the time of the last `parse`, which also clears the changed flag; for any
  /// other time an empty one.
  Subtitle currentSubtitle(MediaTime time) override;

 private:
  void reportFull(MediaTime time);

  CaptionPairSelector selector_;
  CaptionDecoder decoder_;
  log::ILogger* logger_;
  MediaTime lastTime_ = 0;
  bool isFullReported_ = false;
};

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
