// SPDX-License-Identifier: MIT

// What a service shows, cut at the boundaries of segments.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

#include "cues/cue.h"
#include "model/display.h"
#include "streaming/segment.h"

namespace korr::txsub {

/// A subtitle of one segment.
struct SegmentCue {
  /// As far as it was known when the segment closed: a cue goes beyond the segment where its end is
  /// known, else to the segment's end. It starts before the segment when all earlier segments told
  /// this end, else it is a continuation, which starts with the segment.
  Cue cue;
  std::uint32_t id = 0;  ///< the same for all parts of what is shown without a break
};

/// The part of a cue that lies in a segment.
inline Cue partIn(const Segment& segment, const Cue& cue) {
  return {.start = std::max(cue.start, segment.start),
          .stop = std::min(cue.stop, segment.stop),
          .subtitle = cue.subtitle};
}

/// Keeps what a decoder shows until its segment closes. Equal screens that follow each other are
/// one. What is told too late for its segment is shown from the next boundary on.
class DisplayCutter final : public encoding::subtitling::IDisplayListener {
 public:
  void onDisplay(MediaTime time, Subtitle subtitle) override;

  /// What is shown in the segment, in order of time. Segments come in order; forgets what lies
  /// before the end of this one.
  std::vector<SegmentCue> cut(const Segment& segment);

  /// Whether anything has been shown.
  bool hasShown() const { return hasShown_; }

 private:
  /// A change of the screen.
  struct Display {
    MediaTime start = 0;
    std::shared_ptr<const Subtitle> subtitle;  // null: an empty screen
    std::uint32_t id = 0;
  };

  std::optional<MediaTime> endOf(std::size_t index) const;
  void forget(const Segment& segment);

  std::deque<Display> displays_;  // in order of time, each until the next
  MediaTime closed_ = 0;          // segments have been cut up to here
  std::uint32_t lastId_ = 0;
  bool hasShown_ = false;
};

}  // namespace korr::txsub
