// SPDX-License-Identifier: MIT
#include "library/cue_record.h"

#include <cstdlib>

#include "cues/text_layout.h"
#include "files/picture.h"

namespace korr::txsub {

namespace {

constexpr std::int64_t kNanoseconds = 100;  // of a unit of MediaTime

std::int64_t nanoseconds(MediaTime time) {
  return static_cast<std::int64_t>(time) * kNanoseconds;
}

std::uint32_t rgb(TextColour colour) {
  return static_cast<std::uint32_t>(std::strtoul(colourHex(colour).c_str() + 1, nullptr, 16));
}

txsub_run runOf(const TextSpan& span) {
  return {.text = span.text.c_str(),
          .foreground = rgb(span.foreground),
          .background = std::uint32_t{span.backgroundAlpha} << 24 | rgb(span.background),
          .style = (span.italic ? std::uint32_t{TXSUB_ITALIC} : 0U) |
                   (span.underline ? std::uint32_t{TXSUB_UNDERLINE} : 0U)};
}

}  // namespace

CueRecord::CueRecord(std::size_t service, const Cue& cue, MediaTime origin) : cue_(cue) {
  cue_.start = cue.start > origin ? cue.start - origin : 0;
  cue_.stop = cue.stop > origin ? cue.stop - origin : 0;
  view_.service = service;
  view_.start_ns = nanoseconds(cue_.start);
  view_.stop_ns = nanoseconds(cue_.stop);
  view_.origin = this;
  if (cue_.subtitle->bitmap()) {
    takePicture();
  } else {
    takeText();
  }
  view_.text = text_.c_str();
}

void CueRecord::takeText() {
  for (auto& screen : layOut(*cue_.subtitle)) {
    for (auto& line : screen.lines) {
      if (!text_.empty()) text_ += '\n';
      for (const auto& span : line.spans) text_ += span.text;
      lines_.push_back({.spans = std::move(line.spans),
                        .left = screen.leftOf(line.column),
                        .top = screen.topOf(line.row)});
    }
  }
  for (const auto& line : lines_) {
    auto& runs = runs_.emplace_back();
    for (const auto& span : line.spans) runs.push_back(runOf(span));
  }
  for (std::size_t i = 0; i < lines_.size(); ++i) {
    lineViews_.push_back({.runs = runs_[i].data(),
                          .run_count = runs_[i].size(),
                          .left = lines_[i].left,
                          .top = lines_[i].top});
  }
  view_.lines = lineViews_.data();
  view_.line_count = lineViews_.size();
}

void CueRecord::takePicture() {
  const auto& bitmap = *cue_.subtitle->bitmap();
  const auto area = visibleArea(bitmap).value_or(PictureArea{});
  pixels_.reserve(std::size_t{area.width} * area.height * 4);
  for (std::uint32_t row = area.y; row < area.y + area.height; ++row) {
    const auto* const first =
        bitmap.pixels->data() + (std::size_t{row} * bitmap.width + area.x) * 4;
    pixels_.insert(pixels_.end(), first, first + std::size_t{area.width} * 4);
  }
  picture_ = {.rgba = pixels_.data(),
              .width = area.width,
              .height = area.height,
              .x = area.x,
              .y = area.y,
              .display_width = bitmap.width,
              .display_height = bitmap.height};
  view_.picture = &picture_;
}

}  // namespace korr::txsub
