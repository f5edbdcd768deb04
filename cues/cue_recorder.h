// SPDX-License-Identifier: MIT

// From what a service shows over time to cues.
#pragma once

#include <memory>
#include <optional>

#include "cues/cue.h"
#include "cues/cue_tally.h"
#include "model/display.h"

namespace korr::txsub {

/// Makes a cue of everything that is shown: equal subtitles over adjoining intervals make one,
/// empty ones none. A picture ends when its page times out, whatever follows.
class CueRecorder final : public encoding::subtitling::IDisplayListener {
 public:
  /// `listener` is not owned. What nothing ends, before a break in time of more than a day or at
  /// the end of the recording, is shown for `segment` (100 ns; 0: for a day).
  CueRecorder(ICueListener& listener, MediaTime segment);

  void onDisplay(MediaTime time, Subtitle subtitle) override;

  /// The recording ends at `end`: hands out the last cue.
  void finish(MediaTime end);

  /// Whether any subtitle with something to see has come.
  bool hasShown() const { return hasShown_; }

  /// Of the cues handed out so far.
  const CueTally& tally() const { return tally_; }

  /// Whether a picture has come that times out at the moment that it is shown.
  bool hasTimedOutAtOnce() const { return hasTimedOutAtOnce_; }

 private:
  /// What is on the screen, from when, and when it goes by itself.
  struct Shown {
    std::shared_ptr<const Subtitle> subtitle;
    MediaTime start = 0;
    std::optional<MediaTime> timeOut;
  };

  void take(MediaTime time, Subtitle subtitle);
  void endShown(MediaTime time);
  void giveOut();

  ICueListener& listener_;
  MediaTime segment_;
  std::optional<Shown> shown_;  // nothing: the screen is empty
  MediaTime lastTime_ = 0;      // of the last display
  std::optional<Cue> open_;     // may go on, if an equal subtitle follows at once
  CueTally tally_;
  bool hasShown_ = false;
  bool hasTimedOutAtOnce_ = false;
};

}  // namespace korr::txsub
