// SPDX-License-Identifier: MIT
#include "recognition/word_gaps.h"

#include <algorithm>
#include <cmath>

namespace korr::recognition {

namespace {

constexpr double kFirstBin = -20;   // percent
constexpr double kUsualGap = 0.22;  // where nothing has been seen yet

// Gaps that a threshold can lie between: a blank is a fifth to a half of the height of letters.
constexpr std::size_t kLeastBin = 28;
constexpr std::size_t kMostBin = 65;

}  // namespace

std::size_t WordGaps::binOf(double gap) {
  return static_cast<std::size_t>(std::clamp(gap * 100 - kFirstBin, 0.0, double(kBins - 1)));
}

void WordGaps::count(double gap) {
  ++bins_[binOf(gap)].all;
  threshold_ = -1;
}

void WordGaps::learn(double gap, bool isSpace) {
  auto& bin = bins_[binOf(gap)];
  ++(isSpace ? bin.apart : bin.together);
  if (isSpace) ++learnt_;
  threshold_ = -1;
}

bool WordGaps::isUnsure(double gap) const {
  constexpr std::size_t kReach = 2;
  const std::size_t bin = binOf(gap);
  std::uint32_t apart = 0, together = 0;
  for (std::size_t i = bin - std::min(bin, kReach); i <= bin + kReach && i < kBins; ++i) {
    apart += bins_[i].apart;
    together += bins_[i].together;
  }
  return apart + together == 0 || std::min(apart, together) * 4 >= std::max(apart, together);
}

double WordGaps::threshold() const {
  if (threshold_ < 0)
    threshold_ = learnt_ >= 5 ? learntThreshold() : known_ > 0 ? known_ : guessedThreshold();
  return threshold_;
}

// With the fewest contradictions to what was said; in the middle where several have as few.
double WordGaps::learntThreshold() const {
  std::int64_t wrong = 0;
  for (const auto& bin : bins_) wrong += bin.together;
  std::int64_t least = wrong;
  std::size_t first = 0, last = 0;
  for (std::size_t i = 0; i < bins_.size(); ++i) {
    wrong += std::int64_t{bins_[i].apart} - bins_[i].together;
    if (wrong < least) {
      least = wrong;
      first = last = i + 1;
    } else if (wrong == least && last == i) {
      last = i + 1;
    }
  }
  return ((double(first) + double(last)) / 2 + kFirstBin) / 100;
}

// The middle of the longest stretch with the fewest gaps.
double WordGaps::guessedThreshold() const {
  constexpr std::size_t kReach = 3;
  std::uint32_t least = UINT32_MAX, sum = 0;
  std::size_t first = 0, last = 0;
  for (const auto& bin : bins_) sum += bin.all;
  if (sum < 20) return kUsualGap;
  for (std::size_t i = kLeastBin; i <= kMostBin; ++i) {
    std::uint32_t near = 0;
    for (std::size_t k = i - kReach; k <= i + kReach; ++k) near += bins_[k].all;
    if (near < least) {
      least = near;
      first = last = i;
    } else if (near == least && last + 1 == i) {
      last = i;
    }
  }
  return ((double(first) + double(last)) / 2 + 0.5 + kFirstBin) / 100;
}

}  // namespace korr::recognition
