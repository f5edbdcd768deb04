// How fast a replay went.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "filter/host/recording.h"

namespace korr::streaming::direct_show::host::inline v2_1 {

/// Takes notes on the pushing thread and on the delivering one.
class ReplayStatistics {
 public:
  using Clock = std::chrono::steady_clock;

  explicit ReplayStatistics(const Recording& recording);

  /// A sample has been handed to the filter, which took from `began` to now.
  void notePushed(std::size_t sample, Clock::time_point began);

  /// A document up to `stop` has come out.
  void noteDelivered(txsub::MediaTime stop);

  /// One line: samples, time since the first one and CPU, how long Receive took, how long a document took from the
  /// sample that caused it, and how many samples waited meanwhile.
  std::string summary() const;

 private:
  std::unordered_map<txsub::MediaTime, std::size_t> completions_;  // unit time to sample
  mutable std::mutex mutex_;
  std::vector<Clock::time_point> pushedAt_;
  std::vector<double> receiveMicroseconds_;
  std::vector<double> latencyMilliseconds_;
  std::vector<double> depths_;
  std::size_t delivered_ = 0;
};

}  // namespace korr::streaming::direct_show::host::inline v2_1
