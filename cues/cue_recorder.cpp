// SPDX-License-Identifier: MIT
#include "cues/cue_recorder.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <utility>

namespace korr::txsub {

namespace {

using encoding::subtitling::SubtitleBitmap;

constexpr std::size_t kBytesPerPixel = 4;

std::span<const std::uint8_t> paintedBytes(const SubtitleBitmap& bitmap) {
  const auto [first, end] = bitmap.pixels->paintedRows();
  const std::size_t stride = bitmap.width * kBytesPerPixel;
  return bitmap.pixels->bytes().subspan(first * stride, (end - first) * stride);
}

// Whether every pixel is transparent: a DVB page without regions, which clears the screen, is such
// a picture.
bool isTransparent(const SubtitleBitmap& bitmap) {
  const auto rows = paintedBytes(bitmap);
  for (std::size_t alpha = kBytesPerPixel - 1; alpha < rows.size(); alpha += kBytesPerPixel) {
    if (rows[alpha] != 0) return false;
  }
  return true;
}

bool showsNothing(const Subtitle& subtitle) {
  return isEmpty(subtitle) || (subtitle.bitmap() && isTransparent(*subtitle.bitmap()));
}

bool timesOutAtOnce(const Subtitle& subtitle) {
  const auto* bitmap = subtitle.bitmap();
  return bitmap && bitmap->end <= bitmap->start;
}

}  // namespace

CueRecorder::CueRecorder(ICueListener& listener, MediaTime segment)
    : listener_(listener), segment_(segment != 0 ? segment : encoding::subtitling::kDay) {
}

void CueRecorder::onDisplay(MediaTime time, Subtitle subtitle) {
  endShown(time);
  take(time, std::move(subtitle));
  lastTime_ = time;
  const bool goesOn = open_ && shown_ && shown_->subtitle == open_->subtitle && open_->stop == time;
  if (!goesOn) giveOut();
}

void CueRecorder::finish(MediaTime end) {
  if (shown_) {
    // A picture stays until its page times out, wherever the recording ends. A text that comes with
    // the very last sample has no end of its own.
    const MediaTime stop = shown_->timeOut.value_or(end > lastTime_ ? end : lastTime_ + segment_);
    endShown(stop);
  }
  shown_.reset();
  giveOut();
}

// An equal subtitle keeps the old object, so that only addresses need comparing.
void CueRecorder::take(MediaTime time, Subtitle subtitle) {
  const auto last = open_ ? open_->subtitle : nullptr;
  shown_.reset();
  if (showsNothing(subtitle)) return;
  if (timesOutAtOnce(subtitle)) {
    hasTimedOutAtOnce_ = true;
    return;
  }
  hasShown_ = true;
  shown_ = Shown{.subtitle = nullptr, .start = time, .timeOut = {}};
  if (const auto* bitmap = subtitle.bitmap()) {
    shown_->start = std::max(time, bitmap->start);
    shown_->timeOut = bitmap->end;
  }
  shown_->subtitle =
      last && *last == subtitle ? last : std::make_shared<const Subtitle>(std::move(subtitle));
}

// What is on the screen has been there until `time`, or less.
void CueRecorder::endShown(MediaTime time) {
  if (!shown_) return;
  MediaTime stop = time;
  if (stop > lastTime_ && stop - lastTime_ > encoding::subtitling::kDay)
    stop = lastTime_ + segment_;
  if (shown_->timeOut) stop = std::min(stop, *shown_->timeOut);
  if (stop <= shown_->start) return;
  if (open_ && open_->subtitle == shown_->subtitle && open_->stop == shown_->start) {
    open_->stop = stop;
    return;
  }
  giveOut();
  open_ = Cue{.start = shown_->start, .stop = stop, .subtitle = shown_->subtitle};
}

void CueRecorder::giveOut() {
  if (open_) {
    tally_.add(*open_);
    listener_.onCue(*open_);
  }
  open_.reset();
}

}  // namespace korr::txsub
