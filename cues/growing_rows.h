// SPDX-License-Identifier: MIT

// Captions that are written on the screen, between the decoder and what makes cues of them.
#pragma once

#include <optional>

#include "model/display.h"

namespace korr::txsub {

/// A listener in front of another. Roll-up and paint-on captions are told with every pair of
/// letters that comes; cues of a frame or two would be all that is left of them. Live, digital
/// captions are throttled too; for files their decoder waits by itself. Everything else, pop-on
/// captions, teletext and pictures, passes as it is. Not thread-safe.
class GrowingRows final : public encoding::subtitling::IDisplayListener {
 public:
  using MediaTime = encoding::subtitling::MediaTime;
  using Subtitle = encoding::subtitling::Subtitle;

  enum class Output {
    File,  ///< looks ahead: a row that is being written is whole from its first letter on
    Live,  ///< shows rows as they grow, at most twice a second
  };

  /// No written caption is shown for a shorter time: two frames of 29.97 a second, to the tick.
  static constexpr MediaTime kShortest = 66 * encoding::subtitling::kMillisecond;

  /// Rows that move up for the next one are no display of their own for so long: a receiver may
  /// take 0.433 s to move them (CEA-608, C.3).
  static constexpr MediaTime kLongestRoll = 433 * encoding::subtitling::kMillisecond;

  /// A row that rests for longer is no longer being written; what comes then is a display of its
  /// own.
  static constexpr MediaTime kLongestPause = 4 * encoding::subtitling::kSecond;

  /// From one display of a row that grows to the next, live.
  static constexpr MediaTime kLiveInterval = encoding::subtitling::kSecond / 2;

  /// `listener` is not owned.
  GrowingRows(IDisplayListener& listener, Output output) : listener_(listener), output_(output) {}

  /// `time` is that of the first letter for a whole row, and never earlier than the last one told.
  void onDisplay(MediaTime time, Subtitle subtitle) override;

  /// Live, the stream has come to `now`: letters that have waited for long enough are told.
  void advance(MediaTime now);

  /// Tells what waits from before `until`.
  void settle(MediaTime until) {
    if (held_ && held_->time < until) finish();
  }

  /// Tells what waits. To be called at the end, and where everything must be out.
  void finish();

 private:
  struct Display {
    MediaTime time = 0;
    MediaTime lastChange = 0;
    Subtitle subtitle;
  };

  void holdForFile(MediaTime time, Subtitle subtitle);
  bool isOnItsWay(MediaTime time) const;
  void throttle(MediaTime time, Subtitle subtitle);
  void tell(MediaTime time, Subtitle subtitle);

  IDisplayListener& listener_;
  const Output output_;
  std::optional<Display> held_;
  MediaTime lastTime_ = 0;                              // of the last display told
  Subtitle told_{encoding::subtitling::CaptionText{}};  // it, if captions of either kind
};

}  // namespace korr::txsub
