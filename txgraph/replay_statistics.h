// SPDX-License-Identifier: MIT

// How fast a replay went.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "txgraph/recording.h"

namespace korr::streaming::direct_show::host::inline v2_1 {

/// Takes notes on the pushing thread and on the delivering one, which it must not slow down: each
/// has notes of its own, without a lock.
class ReplayStatistics {
 public:
  using Clock = std::chrono::steady_clock;

  /// `recording` is not copied and must outlive this.
  explicit ReplayStatistics(const Recording& recording);

  /// Takes the time of `push`, which hands `sample` to the filter.
  template <typename Push>
  void timePush(std::size_t sample, Push push) {
    if (isTimed(sample)) {
      const auto began = Clock::now();
      push();
      notePushed(sample, began);
    } else {
      push();
    }
    pushed_ = sample + 1;
  }

  /// A document up to `stop` has come out.
  void noteDelivered(txsub::MediaTime stop) {
    deliveries_.push_back({stop, pushed_, Clock::now()});
  }

  /// The end of the stream has come through.
  void noteEnd() { end_ = Clock::now(); }

  /// Once both threads are done. One line: samples, time from the first one to the end and CPU, how
  /// long Receive took, how long a document took from the sample that caused it, and how many
  /// samples waited meanwhile.
  std::string summary() const;

 private:
  // Reading the clock takes as long as handing a sample on.
  static bool isTimed(std::size_t sample) { return sample < 1000 || sample % 16 == 0; }

  void notePushed(std::size_t sample, Clock::time_point began);

  struct Delivery {
    txsub::MediaTime stop = 0;
    std::size_t pushed = 0;  // samples, so far
    Clock::time_point at;
  };

  const Recording& recording_;
  std::vector<Clock::time_point> pushedAt_;  // of timed samples below `pushed_`
  std::vector<double> receiveMicroseconds_;
  std::atomic<std::size_t> pushed_ = 0;
  std::vector<Delivery> deliveries_;
  Clock::time_point end_;
};

}  // namespace korr::streaming::direct_show::host::inline v2_1
