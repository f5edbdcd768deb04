// SPDX-License-Identifier: MIT
#include "streaming/segmenter.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <utility>

namespace korr::txsub {

namespace {

using encoding::subtitling::kMillisecond;
using encoding::subtitling::kSecond;

// Pictures come a second ahead of their time at most (ISO/IEC 13818-1, 2.4.2.6), and many a second:
// when none has for longer, there is no video.
constexpr MediaTime kPictureWait = 2 * kSecond;

// Without PCR the pictures are the clock: what is sent with one is shown up to a second before.
constexpr MediaTime kSendAhead = kSecond;

// What a clock may be off its line before it counts as a jump: encoders round.
constexpr std::int64_t kJitterTicks = 900;

constexpr WallTime kWallTolerance = 2000;

std::int64_t stampDifference(std::uint64_t to, std::uint64_t from) {
  const std::uint64_t ahead = (to - from) % kStampWrap;
  return static_cast<std::int64_t>(ahead) -
         (ahead < kStampWrap / 2 ? 0 : static_cast<std::int64_t>(kStampWrap));
}

}  // namespace

Segmenter::Segmenter(const SegmenterSettings& settings, ISegmentListener& listener,
                     std::function<void(const std::string&)> warn)
    : settings_(settings),
      listener_(listener),
      warn_(std::move(warn)),
      number_(settings.firstNumber) {
}

void Segmenter::onPicture(const ClockPoint& point, bool isRandomAccess) {
  if (!firstPicture_) firstPicture_ = point;
  const bool isVideo = settings_.align == SegmentAlign::Video;
  if (!start_) {
    const bool isLate = point.time > firstPicture_->time + longest();
    if (isRandomAccess || !isVideo) start(point);
    if (!start_ && isLate) start(*firstPicture_);
    if (!start_) return;
  }
  const MediaTime before = std::max(lastPicture_.value_or(start_->time), start_->time);
  if (point.time > before + kPictureWait && !lastClock_) cutClock(point.time - kPictureWait);
  followLine(point);
  lastPicture_ = std::max(lastPicture_.value_or(0), point.time);
  if (isVideo) {
    if (isRandomAccess && point.time >= nextTarget()) cut(point.time);
    limitLength(point.time);
  } else {
    while (nextTarget() <= point.time) cut(nextTarget());
  }
  const bool hasClock = lastClock_ && *lastClock_ + kPictureWait > point.time;
  if (!hasClock) close(point.time - std::min(point.time, kSendAhead));
}

void Segmenter::onClock(const ClockPoint& point) {
  if (!firstClock_) firstClock_ = point;
  lastClock_ = point.time;
  const bool hasPictures = lastPicture_ && *lastPicture_ + kPictureWait > point.time;
  const bool waits = settings_.align == SegmentAlign::Video &&
                     (firstPicture_ || point.time < firstClock_->time + kPictureWait);
  if (!start_) {
    if (waits) return;
    const StreamTicks waited = toStreamTicks(point.time - firstClock_->time);
    start({.time = firstClock_->time, .stamp = point.stamp - waited});
  }
  if (!hasPictures) {
    followLine(point);
    cutClock(point.time);
  }
  close(point.time);
}

void Segmenter::onWallTime(MediaTime time, WallTime wallTime) {
  const bool isKept = wall_ && std::abs(wallTimeAt(time) - wallTime) < kWallTolerance;
  if (!isKept) wall_ = WallPoint{.time = time, .wallTime = wallTime};
}

void Segmenter::finish(MediaTime end) {
  // Too short for a decision.
  if (!start_ && firstPicture_) start(*firstPicture_);
  if (!start_ && firstClock_) start(*firstClock_);
  if (!start_) return;
  // A boundary that was announced and not reached is none.
  while (!pending_.empty() && pending_.back().time >= end) pending_.pop_back();
  while (!pending_.empty()) handOut(pending_.front());
  if (end > start_->time) handOut({.time = end, .ticks = ticksOf(end)});
  start_.reset();
  firstPicture_.reset();
  firstClock_.reset();
}

void Segmenter::start(const ClockPoint& point) {
  start_ = Boundary{.time = point.time,
                    .ticks = point.stamp % kStampWrap,
                    .isJump = settings_.isFirstDiscontinuous};
  origin_ = point.time;
}

// Notes a jump of the time stamps against the line that they were on.
void Segmenter::followLine(const ClockPoint& point) {
  if (!isOffLine(point)) return;
  origin_ = point.time;
  const Boundary jump{.time = point.time, .ticks = point.stamp % kStampWrap, .isJump = true};
  if (point.time > last().time) {
    pending_.push_back(jump);
  } else if (!pending_.empty()) {
    pending_.back() = jump;
  } else {
    *start_ = jump;
  }
}

// Pictures that are shown before a boundary may be sent after it, those of the line before too.
bool Segmenter::isOffLine(const ClockPoint& point) const {
  if (point.time < last().time) return false;
  return std::abs(stampDifference(point.stamp, ticksOf(point.time))) > kJitterTicks;
}

void Segmenter::cut(MediaTime time) {
  pending_.push_back({.time = time, .ticks = ticksOf(time)});
}

void Segmenter::cutClock(MediaTime until) {
  while (nextTarget() <= until) cut(nextTarget());
}

// The target duration of a playlist is a promise that no segment may break (RFC 8216, 4.3.3.1).
void Segmenter::limitLength(MediaTime time) {
  while (time > last().time + longest()) {
    cut(last().time + longest());
    if (std::exchange(isLengthReported_, true)) continue;
    warn_("the video has no random access point for " + std::to_string(longest() / kSecond) +
          " s; segments are cut on the clock there and do not line up with the video's; name a "
          "longer --segment");
  }
}

void Segmenter::close(MediaTime now) {
  while (!pending_.empty() && pending_.front().time + kClosingDelay <= now) {
    handOut(pending_.front());
  }
}

void Segmenter::handOut(const Boundary& boundary) {
  const Boundary end = boundary;
  if (!pending_.empty()) pending_.pop_front();
  Segment segment{.number = number_++,
                  .start = start_->time,
                  .stop = end.time,
                  .startTicks = start_->ticks,
                  .stopTicks = start_->ticks + toStreamTicks(end.time - start_->time),
                  .isDiscontinuous = start_->isJump,
                  .endsInJump = end.isJump};
  if (wall_) segment.wallTime = wallTimeAt(segment.start);
  start_ = end;
  listener_.onSegment(segment);
}

MediaTime Segmenter::nextTarget() const {
  return origin_ + ((last().time - origin_) / settings_.target + 1) * settings_.target;
}

StreamTicks Segmenter::ticksOf(MediaTime time) const {
  return last().ticks + toStreamTicks(time - last().time);
}

WallTime Segmenter::wallTimeAt(MediaTime time) const {
  const auto since = [](MediaTime duration) {
    return static_cast<WallTime>(duration / kMillisecond);
  };
  return time >= wall_->time ? wall_->wallTime + since(time - wall_->time)
                             : wall_->wallTime - since(wall_->time - time);
}

}  // namespace korr::txsub
