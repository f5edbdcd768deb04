// SPDX-License-Identifier: MIT
#include "txgraph/replay_statistics.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <unordered_map>

namespace korr::streaming::direct_show::host::inline v2_1 {

namespace {

double secondsOf(const FILETIME& time) {
  const auto ticks = std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
  return static_cast<double>(ticks) * 1e-7;
}

double cpuSeconds() {
  FILETIME created;
  FILETIME exited;
  FILETIME kernel;
  FILETIME user;
  if (!GetProcessTimes(GetCurrentProcess(), &created, &exited, &kernel, &user)) return 0;
  return secondsOf(kernel) + secondsOf(user);
}

// The value that `share` (0 to 1) of all are not above; 0 of none.
double quantile(std::vector<double> values, double share) {
  if (values.empty()) return 0;
  const auto rank = static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
  std::nth_element(values.begin(), values.begin() + rank, values.end());
  return values[static_cast<std::size_t>(rank)];
}

}  // namespace

ReplayStatistics::ReplayStatistics(const Recording& recording) : recording_(recording) {
  pushedAt_.resize(recording.samples.size());
  receiveMicroseconds_.reserve(recording.samples.size());
}

void ReplayStatistics::notePushed(std::size_t sample, Clock::time_point began) {
  const auto now = Clock::now();
  receiveMicroseconds_.push_back(std::chrono::duration<double, std::micro>(now - began).count());
  pushedAt_[sample] = began;
}

std::string ReplayStatistics::summary() const {
  std::unordered_map<txsub::MediaTime, std::size_t> completions;  // unit time to sample
  for (const auto& [time, sample] : unitCompletions(recording_)) completions.emplace(time, sample);
  std::vector<double> latencyMilliseconds;
  std::vector<double> depths;
  for (const auto& delivery : deliveries_) {
    // Segments within an interval end where no unit is.
    const auto completion = completions.find(delivery.stop);
    if (completion == completions.end() || completion->second >= delivery.pushed) continue;
    const std::size_t sample = completion->second;
    depths.push_back(static_cast<double>(delivery.pushed - 1 - sample));
    if (!isTimed(sample)) continue;
    const auto waited = delivery.at - pushedAt_[sample];
    latencyMilliseconds.push_back(std::chrono::duration<double, std::milli>(waited).count());
  }
  const auto began = pushed_ == 0 ? end_ : pushedAt_.front();
  const double elapsed = std::chrono::duration<double>(end_ - began).count();
  std::array<char, 400> text{};
  std::snprintf(text.data(), text.size(),
                "%zu samples in, %zu out, %.4f s (CPU %.3f s); Receive median %.1f us, 99 %% "
                "%.1f us; latency median %.3f ms, 99 %% %.3f ms; samples waiting median %.0f, most "
                "%.0f",
                pushed_.load(), deliveries_.size(), elapsed, cpuSeconds(),
                quantile(receiveMicroseconds_, 0.5), quantile(receiveMicroseconds_, 0.99),
                quantile(latencyMilliseconds, 0.5), quantile(latencyMilliseconds, 0.99),
                quantile(depths, 0.5), quantile(depths, 1));
  return text.data();
}

}  // namespace korr::streaming::direct_show::host::inline v2_1
