#include "cues/growing_rows.h"

#include <algorithm>
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

struct Cell {
  std::uint32_t column;
  const GlyphText* glyph;
  const CaptionText::TextRun* run;
};

std::vector<Cell> cellsOf(const CaptionText::TextRow& row) {
  std::vector<Cell> cells;
  for (const auto& run : row.runs) {
    std::uint32_t column = run.column;
    for (const auto& glyph : run.glyphs) cells.push_back({column++, &glyph, &run});
  }
  return cells;
}

bool areEqual(const Cell& left, const Cell& right) {
  const auto looks = [](const Cell& cell) {
    return std::tie(cell.column, *cell.glyph, cell.run->foreground, cell.run->background,
                    cell.run->backgroundOpacity, cell.run->underline, cell.run->italic);
  };
  return looks(left) == looks(right);
}

std::size_t commonStart(std::span<const Cell> left, std::span<const Cell> right) {
  const auto end = std::mismatch(left.begin(), left.end(), right.begin(), right.end(), areEqual);
  return static_cast<std::size_t>(end.first - left.begin());
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
  const auto old = cellsOf(before);
  const auto cells = cellsOf(now);
  const std::size_t common = commonStart(old, cells);
  return cells.size() >= old.size() && common + 1 >= old.size() && (common > 0 || old.size() == 1);
}

// Whether `now` is `before` with more letters in its rows.
bool hasGrown(const CaptionText& before, const CaptionText& now) {
  return !now.rows.empty() && std::equal(before.rows.begin(), before.rows.end(), now.rows.begin(),
                                         now.rows.end(), [](const auto& left, const auto& right) {
                                           return left == right || hasGrown(left, right);
                                         });
}

bool hasGrown(const Subtitle& before, const Subtitle& now) {
  return before.captionText() && now.captionText() &&
         hasGrown(*before.captionText(), *now.captionText());
}

// Whether one row begins with all of the other, wherever they stand.
bool isPartOf(const CaptionText::TextRow& part, const CaptionText::TextRow& row) {
  const auto cells = cellsOf(part);
  const auto others = cellsOf(row);
  return commonStart(cells, others) == std::min(cells.size(), others.size());
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
    const bool isTooShort = isWritten(held_->subtitle) && time - held_->time < kShortest;
    if (isTooShort && keepsRows(held_->subtitle, subtitle)) {
      held_.reset();  // the display before it stays until `time`
    } else {
      if (isTooShort) time = held_->time + kShortest;
      finish();
    }
  }
  held_.emplace(Display{.time = time, .lastChange = time, .subtitle = std::move(subtitle)});
}

void GrowingRows::throttle(MediaTime time, Subtitle subtitle) {
  if (held_ && !hasGrown(held_->subtitle, subtitle) && !keepsRows(held_->subtitle, subtitle)) {
    finish();
  }
  if (wasWritten_ && isWritten(subtitle) && time < lastTime_ + kLiveInterval) {
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
  wasWritten_ = isWritten(subtitle);
  listener_.onDisplay(lastTime_, std::move(subtitle));
}

}  // namespace korr::txsub
