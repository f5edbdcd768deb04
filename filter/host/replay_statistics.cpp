#include "filter/host/replay_statistics.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdio>

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

ReplayStatistics::ReplayStatistics(const Recording& recording) {
  for (const auto& [time, sample] : unitCompletions(recording)) completions_.emplace(time, sample);
  pushedAt_.resize(recording.samples.size());
  receiveMicroseconds_.reserve(recording.samples.size());
}

void ReplayStatistics::notePushed(std::size_t sample, Clock::time_point began) {
  const auto now = Clock::now();
  receiveMicroseconds_.push_back(std::chrono::duration<double, std::micro>(now - began).count());
  pushedAt_[sample] = began;
}

void ReplayStatistics::noteDelivered(txsub::MediaTime stop) {
  const auto now = Clock::now();
  ++delivered_;
  const std::size_t pushed = pushed_;
  // Segments within an interval end where no unit is.
  const auto completion = completions_.find(stop);
  if (completion == completions_.end() || completion->second >= pushed) return;
  depths_.push_back(static_cast<double>(pushed - 1 - completion->second));
  if (!isTimed(completion->second)) return;
  const auto waited = now - pushedAt_[completion->second];
  latencyMilliseconds_.push_back(std::chrono::duration<double, std::milli>(waited).count());
}

std::string ReplayStatistics::summary() const {
  const auto began = pushed_ == 0 ? end_ : pushedAt_.front();
  const double elapsed = std::chrono::duration<double>(end_ - began).count();
  std::array<char, 400> text{};
  std::snprintf(text.data(), text.size(),
                "%zu samples in, %zu out, %.4f s (CPU %.3f s); Receive median %.1f us, 99 %% "
                "%.1f us; latency median %.3f ms, 99 %% %.3f ms; samples waiting median %.0f, most "
                "%.0f",
                pushed_.load(), delivered_, elapsed, cpuSeconds(),
                quantile(receiveMicroseconds_, 0.5), quantile(receiveMicroseconds_, 0.99),
                quantile(latencyMilliseconds_, 0.5), quantile(latencyMilliseconds_, 0.99),
                quantile(depths_, 0.5), quantile(depths_, 1));
  return text.data();
}

}  // namespace korr::streaming::direct_show::host::inline v2_1
