// SPDX-License-Identifier: MIT
#include "readers/mpegts/ts_clock.h"

#include <algorithm>
#include <cstdlib>

namespace korr::txsub {
namespace {

// PCRs come at least every 100 ms (ISO/IEC 13818-1, 2.7.2); what is more tells of loss.
constexpr TsTicks kLongestStep = kTicksPerSecond / 10;

}  // namespace

void TsClock::onPcr(std::uint64_t pcr, bool discontinuity) {
  if (!now_) {
    now_ = static_cast<TsTicks>(pcr);
  } else {
    const TsTicks step = tickDifference(pcr, pcr_);
    const bool isBackwards = step < (isCarriedOn_ ? -kClockTolerance : 0);
    const bool isSplice = discontinuity || isBackwards || step > kClockTolerance;
    if (!isSplice && step > 0) step_ = std::min(step, kLongestStep);
    *now_ += isSplice ? step_ : step;
  }
  pcr_ = pcr;
  isCarriedOn_ = false;
}

void TsClock::carryOn(std::uint64_t stamp, TsTicks time) {
  pcr_ = stamp;
  now_ = time;
  isCarriedOn_ = true;
}

std::optional<TsTicks> TsClock::place(std::uint64_t stamp) const {
  if (!now_) return {};
  const TsTicks distance = tickDifference(stamp, pcr_);
  if (std::abs(distance) > kClockTolerance) return {};
  return *now_ + distance;
}

TsTicks TsStreamClock::place(std::uint64_t pts, TsClock& clock) {
  if (const auto time = clock.place(pts)) return remember(pts, *time);
  const bool isNearLast = last_ && std::abs(tickDifference(pts, last_->pts)) <= kClockTolerance;
  if (clock.now() && !isNearLast) return remember(pts, *clock.now());
  const TsTicks time = placeAlone(pts);
  if (clock.now() && time > *clock.now() + kClockTolerance) clock.carryOn(pts, time);
  return remember(pts, time);
}

std::optional<TsTicks> TsStreamClock::placeSubtitle(std::optional<std::uint64_t> pts,
                                                    const TsClock& clock) {
  if (!pts) return clock.now();
  if (const auto time = clock.place(*pts)) return remember(*pts, *time);
  return remember(*pts, clock.now() ? *clock.now() : placeAlone(*pts));
}

// Without a clock a long pause and a splice forwards look alike: a pause it is.
TsTicks TsStreamClock::placeAlone(std::uint64_t pts) const {
  if (!last_) return static_cast<TsTicks>(pts);
  const TsTicks step = tickDifference(pts, last_->pts);
  return step < -kClockTolerance ? last_->time : last_->time + step;
}

TsTicks TsStreamClock::remember(std::uint64_t pts, TsTicks time) {
  last_ = Stamp{pts, time};
  return time;
}

}  // namespace korr::txsub
