// SPDX-License-Identifier: MIT

// Where the segments of a stream begin and end.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>

#include "streaming/segment.h"

namespace korr::txsub {

/// A time stamp of the programme and the moment that the reader made of it.
struct ClockPoint {
  MediaTime time = 0;       ///< 100 ns, on the reader's line of time
  std::uint64_t stamp = 0;  ///< 90 kHz, 33 bits: PTS of a picture, or PCR base
};

/// What segments are cut at.
enum class SegmentAlign {
  Video,  ///< random access points of the video, as its own segments are
  Grid,   ///< whole multiples of the target from the first moment on
};

struct SegmenterSettings {
  MediaTime target = 6 * encoding::subtitling::kSecond;
  SegmentAlign align = SegmentAlign::Video;
  std::uint64_t firstNumber = 1;
  /// Whether the first segment goes on from nothing that was published before.
  bool isFirstDiscontinuous = false;
};

/// Turns the programme's clock into segments. Each boundary is the first random access point at or
/// after a multiple of the target, so that lateness does not add up. Where there is no video, the
/// clock itself is cut at these multiples; a jump of the clock is a boundary; its wrap is nothing.
///
/// A segment is handed out when the clock has passed its end by `kClosingDelay`. Not thread-safe.
class Segmenter {
 public:
  /// Subtitles must have come when the clock reaches their PTS, but a row may take a field or two.
  static constexpr MediaTime kClosingDelay = 60 * encoding::subtitling::kMillisecond;

  /// `listener` is not owned. `warn` takes what an operator should know, in a line each.
  Segmenter(const SegmenterSettings& settings, ISegmentListener& listener,
            std::function<void(const std::string&)> warn);

  /// A picture, in the order in which they are sent.
  void onPicture(const ClockPoint& point, bool isRandomAccess);

  /// The programme clock reference.
  void onClock(const ClockPoint& point);

  /// The time of day at `time`. Kept until it is two seconds off: TDT counts in seconds.
  void onWallTime(MediaTime time, WallTime wallTime);

  /// The stream ends: hands out what is left.
  void finish(MediaTime end);

  bool hasStarted() const { return start_.has_value(); }

  /// How long a segment may be at most; 100 ns. A longer one is cut on the clock.
  MediaTime longest() const { return longestOf(settings_.target); }
  static constexpr MediaTime longestOf(MediaTime target) { return target + target / 2; }

 private:
  /// The start of a segment, and the line of ticks from there on.
  struct Boundary {
    MediaTime time = 0;
    StreamTicks ticks = 0;
    bool isJump = false;
  };

  void start(const ClockPoint& point);
  void followLine(const ClockPoint& point);
  void cut(MediaTime time);
  void cutClock(MediaTime until);
  void limitLength(MediaTime time);
  void close(MediaTime now);
  void handOut(const Boundary& end);
  const Boundary& last() const { return pending_.empty() ? *start_ : pending_.back(); }
  MediaTime nextTarget() const;
  StreamTicks ticksOf(MediaTime time) const;
  bool isOffLine(const ClockPoint& point) const;

  SegmenterSettings settings_;
  ISegmentListener& listener_;
  std::function<void(const std::string&)> warn_;
  std::uint64_t number_;
  std::optional<Boundary> start_;  // of the segment that is open
  std::deque<Boundary> pending_;   // found, but not passed yet
  MediaTime origin_ = 0;           // what multiples of the target count from
  std::optional<ClockPoint> firstClock_;
  std::optional<ClockPoint> firstPicture_;
  std::optional<MediaTime> lastPicture_;
  std::optional<MediaTime> lastClock_;
  bool isLengthReported_ = false;

  struct WallPoint {
    MediaTime time = 0;
    WallTime wallTime = 0;
  };
  std::optional<WallPoint> wall_;
  WallTime wallTimeAt(MediaTime time) const;
};

}  // namespace korr::txsub
