#include "txsub/input/ts_clock.h"

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
    const bool isSplice = discontinuity || step < 0 || step > kClockTolerance;
    if (!isSplice) step_ = std::min(step, kLongestStep);
    *now_ += isSplice ? step_ : step;
  }
  pcr_ = pcr;
}

std::optional<TsTicks> TsClock::place(std::uint64_t stamp) const {
  if (!now_) return {};
  const TsTicks distance = tickDifference(stamp, pcr_);
  if (std::abs(distance) > kClockTolerance) return {};
  return *now_ + distance;
}

TsTicks TsStreamClock::place(std::uint64_t pts, const TsClock& clock) {
  if (const auto time = clock.place(pts)) return remember(pts, *time);
  const bool isNearLast = last_ && std::abs(tickDifference(pts, last_->pts)) <= kClockTolerance;
  return remember(pts, clock.now() && !isNearLast ? *clock.now() : placeAlone(pts));
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

std::optional<TsTicks> TsStreamClock::last() const {
  if (!last_) return {};
  return last_->time;
}

TsTicks TsStreamClock::remember(std::uint64_t pts, TsTicks time) {
  last_ = Stamp{pts, time};
  return time;
}

}  // namespace korr::txsub
