// SPDX-License-Identifier: MIT
#include "readers/video/presentation_order.h"

#include <algorithm>
#include <utility>

namespace korr::txsub {
namespace {

constexpr std::size_t kDepth = 16;  // pictures held back

// Pictures of one coded sequence do not lie further apart; a longer step is a cut, and what was
// before it is shown before it.
constexpr MediaTime kLongestReordering = 2 * encoding::subtitling::kSecond;

// Bounds what a stream whose pictures all claim the same time can pile up.
constexpr std::size_t kMostBytesOfOneTime = 4096;

constexpr MediaTime distance(MediaTime a, MediaTime b) {
  return a > b ? a - b : b - a;
}

}  // namespace

void PresentationOrder::push(MediaTime time, std::span<const std::uint8_t> triplets) {
  if (distance(time, lastTime_) > kLongestReordering) flush();
  lastTime_ = time;

  const auto after = std::ranges::upper_bound(held_, time, {}, &Picture::time);
  if (after != held_.begin() && std::prev(after)->time == time &&
      std::prev(after)->triplets.size() < kMostBytesOfOneTime) {
    auto& joined = std::prev(after)->triplets;
    joined.insert(joined.end(), triplets.begin(), triplets.end());
    return;
  }
  held_.insert(after, {time, {triplets.begin(), triplets.end()}});

  if (held_.size() > kDepth) {
    const Picture first = std::move(held_.front());
    held_.erase(held_.begin());
    deliver(first);
  }
}

void PresentationOrder::release(MediaTime now) {
  while (!held_.empty() && held_.front().time <= now) {
    const Picture first = std::move(held_.front());
    held_.erase(held_.begin());
    deliver(first);
  }
}

void PresentationOrder::flush() {
  const auto pictures = std::exchange(held_, {});
  for (const Picture& picture : pictures) deliver(picture);
}

void PresentationOrder::deliver(const Picture& picture) {
  if (!picture.triplets.empty()) listener_(picture.time, picture.triplets);
}

}  // namespace korr::txsub
