// SPDX-License-Identifier: MIT
#include "streaming/display_cutter.h"

#include <algorithm>
#include <utility>

namespace korr::txsub {

namespace {

// The parts of a DVB display set are told one after the other, closer together than a stream could
// mean.
constexpr MediaTime kTick = encoding::subtitling::fromTicks90k(1);

// When a picture times out (EN 300 743, 7.2.2: page_time_out); text stays until it is replaced.
std::optional<MediaTime> timeOutOf(const Subtitle& subtitle) {
  const auto* bitmap = subtitle.bitmap();
  if (!bitmap) return {};
  return bitmap->end;
}

bool showsNothing(const Subtitle& subtitle) {
  const auto* bitmap = subtitle.bitmap();
  return isEmpty(subtitle) || (bitmap && bitmap->end <= bitmap->start);
}

}  // namespace

void DisplayCutter::onDisplay(MediaTime time, Subtitle subtitle) {
  time = std::max(time, closed_);
  const bool isShowing = !showsNothing(subtitle);
  if (!displays_.empty()) {
    const auto& last = displays_.back();
    const bool isSame = isShowing ? last.subtitle && *last.subtitle == subtitle : !last.subtitle;
    if (isSame) return;
    if (last.start >= time) displays_.pop_back();  // it was never seen
  }
  if (displays_.empty() && !isShowing) return;
  displays_.push_back(
      {.start = time,
       .subtitle = isShowing ? std::make_shared<const Subtitle>(std::move(subtitle)) : nullptr,
       .id = ++lastId_});
  hasShown_ = hasShown_ || isShowing;
}

std::vector<SegmentCue> DisplayCutter::cut(const Segment& segment) {
  std::vector<SegmentCue> cues;
  for (std::size_t i = 0; i < displays_.size(); ++i) {
    const Display& display = displays_[i];
    if (display.start >= segment.stop) break;
    if (!display.subtitle) continue;
    auto stop = endOf(i).value_or(segment.stop);
    if (segment.endsInJump) stop = std::min(stop, segment.stop);
    if (const auto timeOut = timeOutOf(*display.subtitle)) stop = std::min(stop, *timeOut);
    if (stop <= std::max(display.start, segment.start)) continue;
    if (stop - display.start < kTick) continue;
    cues.push_back({.cue = {.start = display.start, .stop = stop, .subtitle = display.subtitle},
                    .id = display.id});
  }
  forget(segment);
  return cues;
}

// When the next screen takes its place, as far as that has come.
std::optional<MediaTime> DisplayCutter::endOf(std::size_t index) const {
  if (index + 1 == displays_.size()) return {};
  return displays_[index + 1].start;
}

void DisplayCutter::forget(const Segment& segment) {
  closed_ = std::max(closed_, segment.stop);
  while (displays_.size() > 1 && displays_[1].start <= closed_) displays_.pop_front();
  if (displays_.empty() || displays_.front().start >= closed_) return;
  // What was told without its end goes on as a part of its own.
  if (displays_.size() == 1 || segment.endsInJump) displays_.front().start = closed_;
}

}  // namespace korr::txsub
