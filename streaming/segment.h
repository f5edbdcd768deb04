// SPDX-License-Identifier: MIT

// A segment of a stream: where it lies, and nothing of what it holds.
#pragma once

#include <cstdint>
#include <optional>

#include "model/media_time.h"

namespace korr::txsub {

using encoding::subtitling::MediaTime;

/// Ticks of 90 kHz that count on over the wrap of the 33-bit clock. Their low 33 bits are what the
/// programme's time stamps say (ISO/IEC 13818-1, 2.4.2).
using StreamTicks = std::uint64_t;

/// Milliseconds since 1970-01-01T00:00:00Z.
using WallTime = std::int64_t;

inline constexpr StreamTicks kStreamTicksPerSecond = 90'000;
inline constexpr StreamTicks kStampWrap = StreamTicks{1} << 33;

/// The inverse of encoding::subtitling::fromTicks90k, to the nearest tick.
constexpr StreamTicks toStreamTicks(MediaTime time) {
  return time / 1000 * 9 + (time % 1000 * 9 + 500) / 1000;
}

struct Segment {
  std::uint64_t number = 1;  ///< of the stream, one after the other
  MediaTime start = 0;       ///< 100 ns, on the reader's line of time
  MediaTime stop = 0;        ///< 100 ns, after `start`: where the next one starts
  StreamTicks startTicks = 0;
  StreamTicks stopTicks = 0;     ///< on the same line of ticks, jump or no jump
  bool isDiscontinuous = false;  ///< the clock jumped: its ticks do not go on from the last one's
  bool endsInJump = false;       ///< so do those of the next one
  std::optional<WallTime> wallTime = {};  ///< of its start

  StreamTicks duration() const { return stopTicks - startTicks; }

  /// A time on the line of this segment's ticks; 0 when it lies before all ticks.
  StreamTicks ticksOf(MediaTime time) const {
    if (time >= start) return startTicks + toStreamTicks(time - start);
    const StreamTicks before = toStreamTicks(start - time);
    return startTicks - (before < startTicks ? before : startTicks);
  }
};

/// Takes segments in order.
class ISegmentListener {
 public:
  virtual ~ISegmentListener() = default;

  /// All that is shown in the segment has come.
  virtual void onSegment(const Segment& segment) = 0;
};

}  // namespace korr::txsub
