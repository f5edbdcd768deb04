// SPDX-License-Identifier: MIT

// Fills a history with segments of six seconds.
#pragma once

#include "streaming/stream_history.h"

namespace korr::txsub {

class Publisher {
 public:
  explicit Publisher(StreamHistory& history) : history_(history) {}

  void publish(int count) {
    for (int i = 0; i < count; ++i, start_ += kLength, ticks_ += toStreamTicks(kLength)) {
      const Segment segment{.number = history_.nextNumber(),
                            .start = start_,
                            .stop = start_ + kLength,
                            .startTicks = ticks_,
                            .stopTicks = ticks_ + toStreamTicks(kLength),
                            .isDiscontinuous = jumps_};
      jumps_ = false;
      // 2026-01-01T00:00:00Z at time 0.
      history_.add(segment, 1'767'225'600'000 + static_cast<WallTime>(start_ / 10'000));
    }
  }

  void jump(StreamTicks ticks) {
    ticks_ += ticks;
    jumps_ = true;
  }

 private:
  static constexpr MediaTime kLength = 6 * encoding::subtitling::kSecond;

  StreamHistory& history_;
  MediaTime start_ = 0;
  StreamTicks ticks_ = 90'000;
  bool jumps_ = false;
};

}  // namespace korr::txsub
