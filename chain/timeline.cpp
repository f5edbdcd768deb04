// SPDX-License-Identifier: MIT
#include "chain/timeline.h"

#include <algorithm>

namespace korr::encoding::subtitling::inline v2_1 {

void Timeline::onNal(packaging::lib_parse_es::UniqueNAL unit) {
  const auto& payload = unit->payload;
  ++counters_.units;
  counters_.unitBytes += payload.size();
  if (!unit->hasTime) {
    ++counters_.untimedUnits;
    return;
  }
  const MediaTime time = unit->startTime;
  // Every unit counts as discontinuous, deliberately: a parser keeps nothing half-read across
  // units.
  parser_.parse(payload.empty() ? nullptr : payload.data(),
                static_cast<std::int64_t>(payload.size()), time, true);
  const bool changed = parser_.hasChanged();

  if (!shownUntil_) {
    if (time != 0 || !settings_.startsAfterZero) shownUntil_ = time;
    consumer_.take(time);
    return;
  }
  const auto elapsed = static_cast<std::int64_t>(time - *shownUntil_);
  if (elapsed <= 0) return;
  if (!changed && elapsed < settings_.segmentDuration) return;

  showUntil(time);
  consumer_.take(time);
}

void Timeline::showUntil(MediaTime end) {
  if (!shownUntil_ || end <= *shownUntil_) return;
  const auto segment = static_cast<MediaTime>(settings_.segmentDuration);
  const MediaTime from = *shownUntil_;
  if (const MediaTime step = end - from; step > kDay) {
    // A break in time, not an interval to fill: one segment, then on from the new time.
    consumer_.onShown(from, from + (segment != 0 ? std::min(segment, step) : kDay));
    shownUntil_ = end;
    return;
  }
  while (*shownUntil_ != end) {
    const MediaTime start = *shownUntil_;
    const MediaTime rest = end - start;
    const MediaTime stop = start + (segment != 0 ? std::min(segment, rest) : rest);
    consumer_.onShown(start, stop);
    shownUntil_ = stop;
  }
}

}  // namespace korr::encoding::subtitling::inline v2_1
