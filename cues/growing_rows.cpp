// SPDX-License-Identifier: MIT
#include "cues/growing_rows.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <tuple>
#include <utility>
#include <vector>

namespace korr::txsub {
namespace {

using encoding::subtitling::CaptionMode;
using encoding::subtitling::CaptionText;
using encoding::subtitling::GlyphText;
using encoding::subtitling::Subtitle;
using encoding::subtitling::WindowText;

// Walks the characters of a row, those of one style at a time.
class RowWalk {
 public:
  explicit RowWalk(const CaptionText::TextRow& row) : run_(row.runs.begin()), end_(row.runs.end()) {
    skipEmptyRuns();
  }

  bool isAtEnd() const { return run_ == end_; }

  /// The characters up to the next change of style.
  std::span<const GlyphText> glyphs() const { return std::span(run_->glyphs).subspan(glyph_); }

  /// By `count` of them.
  void advance(std::size_t count) {
    glyph_ += count;
    if (glyph_ < run_->glyphs.size()) return;
    ++run_;
    glyph_ = 0;
    skipEmptyRuns();
  }

  /// Whether what comes next begins in the same place in the same style.
  bool standsLike(const RowWalk& other) const {
    const auto look = [](const RowWalk& walk) {
      const auto& run = *walk.run_;
      return std::tuple(run.column + walk.glyph_, run.foreground, run.background,
                        run.backgroundOpacity, run.underline, run.italic);
    };
    return look(*this) == look(other);
  }

 private:
  void skipEmptyRuns() {
    while (run_ != end_ && run_->glyphs.empty()) ++run_;
  }

  std::vector<CaptionText::TextRun>::const_iterator run_;
  std::vector<CaptionText::TextRun>::const_iterator end_;
  std::size_t glyph_ = 0;
};

std::size_t sizeOf(const CaptionText::TextRow& row) {
  std::size_t size = 0;
  for (const auto& run : row.runs) size += run.glyphs.size();
  return size;
}

// How many characters both rows begin with.
std::size_t commonStart(const CaptionText::TextRow& left, const CaptionText::TextRow& right) {
  std::size_t count = 0;
  RowWalk other(right);
  for (RowWalk walk(left); !walk.isAtEnd() && !other.isAtEnd() && walk.standsLike(other);) {
    const auto ours = walk.glyphs();
    const auto theirs = other.glyphs();
    const std::size_t most = std::min(ours.size(), theirs.size());
    const auto same = static_cast<std::size_t>(
        std::mismatch(ours.begin(), ours.begin() + static_cast<std::ptrdiff_t>(most),
                      theirs.begin())
            .first -
        ours.begin());
    count += same;
    if (same < most) break;
    walk.advance(same);
    other.advance(same);
  }
  return count;
}

// Written on the screen letter by letter.
bool isWritten(const CaptionText::TextRow& row) {
  return row.mode != CaptionMode::PopOn && row.mode != CaptionMode::None;
}

bool isWritten(const Subtitle& subtitle) {
  const auto* text = subtitle.captionText();
  return text && std::any_of(text->rows.begin(), text->rows.end(),
                             [](const auto& row) { return isWritten(row); });
}

// Whether letters were added at the end of a row. An extended character takes the place of the last
// one (CEA-608, 6.4.2).
bool hasGrown(const CaptionText::TextRow& before, const CaptionText::TextRow& now) {
  if (before.number != now.number || !isWritten(now)) return false;
  const std::size_t size = sizeOf(before);
  const std::size_t common = commonStart(before, now);
  return sizeOf(now) >= size && common + 1 >= size && (common > 0 || size == 1);
}

// Whether `now` is `before` with more letters in its rows.
bool hasGrown(const CaptionText& before, const CaptionText& now) {
  return !now.rows.empty() && std::equal(before.rows.begin(), before.rows.end(), now.rows.begin(),
                                         now.rows.end(), [](const auto& left, const auto& right) {
                                           return left == right || hasGrown(left, right);
                                         });
}

// Letters of rows of windows, each with what it looks like.
std::vector<std::pair<std::uint32_t, std::pair<GlyphText, WindowText::Pen>>> lettersOf(
    const WindowText::Row& row) {
  std::vector<std::pair<std::uint32_t, std::pair<GlyphText, WindowText::Pen>>> letters;
  for (const auto& run : row.runs) {
    for (std::uint32_t i = 0; i < run.glyphs.size(); ++i) {
      letters.push_back({run.column + i, {run.glyphs[i], run.pen}});
    }
  }
  return letters;
}

bool hasGrown(const WindowText::Row& before, const WindowText::Row& now) {
  if (before == now) return true;
  const auto left = lettersOf(before);
  const auto right = lettersOf(now);
  return before.number == now.number && left.size() <= right.size() &&
         std::equal(left.begin(), left.end(), right.begin());
}

// Whether `now` is `before` with more letters in its rows, or more rows.
bool hasGrown(const WindowText::Window& before, const WindowText::Window& now) {
  WindowText::Window frame = now;
  frame.rows = before.rows;
  return frame == before && before.rows.size() <= now.rows.size() &&
         std::equal(before.rows.begin(), before.rows.end(), now.rows.begin(),
                    [](const auto& left, const auto& right) { return hasGrown(left, right); });
}

// Whether `now` shows what `before` does in the same windows, written on.
bool windowsGrew(const Subtitle& before, const Subtitle& now) {
  if (!before.windowText() || !now.windowText() || before.windowText()->windows.empty()) {
    return false;
  }
  const auto& left = before.windowText()->windows;
  const auto& right = now.windowText()->windows;
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](const auto& a, const auto& b) { return hasGrown(a, b); });
}

bool hasGrown(const Subtitle& before, const Subtitle& now) {
  if (windowsGrew(before, now)) return true;
  return before.captionText() && now.captionText() &&
         hasGrown(*before.captionText(), *now.captionText());
}

Subtitle copyOfCaptions(const Subtitle& subtitle) {
  if (const auto* text = subtitle.windowText()) return Subtitle(*text);
  return Subtitle(subtitle.captionText() ? *subtitle.captionText() : CaptionText{});
}

// Whether one row begins with all of the other, wherever they stand.
bool isPartOf(const CaptionText::TextRow& part, const CaptionText::TextRow& row) {
  return commonStart(part, row) == std::min(sizeOf(part), sizeOf(row));
}

// Whether `now` shows all of `before`, moved or not, but for letters that were taken back.
bool keepsRows(const Subtitle& before, const Subtitle& now) {
  if (!before.captionText() || !now.captionText()) return false;
  const auto& rows = now.captionText()->rows;
  return std::all_of(before.captionText()->rows.begin(), before.captionText()->rows.end(),
                     [&](const auto& row) {
                       return std::any_of(rows.begin(), rows.end(),
                                          [&](const auto& other) { return isPartOf(row, other); });
                     });
}

}  // namespace

void GrowingRows::onDisplay(MediaTime time, Subtitle subtitle) {
  if (output_ == Output::File) {
    holdForFile(time, std::move(subtitle));
  } else {
    throttle(time, std::move(subtitle));
  }
}

void GrowingRows::holdForFile(MediaTime time, Subtitle subtitle) {
  if (held_) {
    time = std::max(time, held_->time);
    if (time - held_->lastChange <= kLongestPause && hasGrown(held_->subtitle, subtitle)) {
      held_->subtitle = std::move(subtitle);
      held_->lastChange = time;
      return;
    }
    if (isOnItsWay(time) && keepsRows(held_->subtitle, subtitle)) {
      held_.reset();  // the display before it stays until `time`
    } else {
      if (isWritten(held_->subtitle)) time = std::max(time, held_->time + kShortest);
      finish();
    }
  }
  held_.emplace(Display{.time = time, .lastChange = time, .subtitle = std::move(subtitle)});
}

// Whether what is held makes no display of its own until `time`: too short, or rows that only move
// up for the one to come.
bool GrowingRows::isOnItsWay(MediaTime time) const {
  if (!isWritten(held_->subtitle)) return false;
  const MediaTime duration = time - held_->time;
  if (duration < kShortest) return true;
  return duration < kLongestRoll &&
         held_->subtitle.captionText()->rows.size() <= told_.captionText()->rows.size() &&
         keepsRows(held_->subtitle, told_);
}

void GrowingRows::throttle(MediaTime time, Subtitle subtitle) {
  if (held_ && !hasGrown(held_->subtitle, subtitle) && !keepsRows(held_->subtitle, subtitle)) {
    finish();
  }
  const Subtitle& before = held_ ? held_->subtitle : told_;
  const bool waits = (isWritten(told_) && isWritten(subtitle)) || windowsGrew(before, subtitle);
  if (waits && time < lastTime_ + kLiveInterval) {
    held_.emplace(Display{.time = time, .lastChange = time, .subtitle = std::move(subtitle)});
    return;
  }
  held_.reset();
  tell(time, std::move(subtitle));
}

void GrowingRows::advance(MediaTime now) {
  if (output_ != Output::Live || !held_ || now < lastTime_ + kLiveInterval) return;
  const MediaTime time = std::max(held_->time, lastTime_ + kLiveInterval);
  tell(time, std::move(held_->subtitle));
  held_.reset();
}

void GrowingRows::finish() {
  if (!held_) return;
  tell(held_->time, std::move(held_->subtitle));
  held_.reset();
}

void GrowingRows::tell(MediaTime time, Subtitle subtitle) {
  lastTime_ = std::max(lastTime_, time);
  told_ = copyOfCaptions(subtitle);
  listener_.onDisplay(lastTime_, std::move(subtitle));
}

}  // namespace korr::txsub
