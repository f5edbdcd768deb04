// SPDX-License-Identifier: MIT

// Any bytes as caption triplets by a receiver's rules, and through what makes rows whole: every
// screen is one that could be drawn, and times never run back.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "closed_caption/caption_display_decoder.h"
#include "cues/growing_rows.h"

namespace {

using namespace korr::encoding::subtitling;
using closed_caption::CaptionDisplayDecoder;
using closed_caption::CaptionScreen;
using korr::txsub::GrowingRows;

void check(bool isRight) {
  if (!isRight) std::abort();
}

void checkRow(const CaptionText::TextRow& row) {
  check(!row.runs.empty());
  std::uint32_t end = 0;
  bool isBlank = true;
  for (const auto& run : row.runs) {
    check(!run.glyphs.empty() && run.column >= end);
    end = run.column + static_cast<std::uint32_t>(run.glyphs.size());
    for (const auto& glyph : run.glyphs) {
      check(!glyph.view().empty());
      isBlank = isBlank && glyph.view() == " ";
    }
  }
  check(!isBlank && end <= CaptionScreen::kColumns);
}

bool isWritten(const Subtitle& subtitle) {
  const auto& rows = subtitle.captionText()->rows;
  return std::any_of(rows.begin(), rows.end(),
                     [](const auto& row) { return row.mode != CaptionMode::PopOn; });
}

/// Checks what it is told; `shortest` is how long a written caption stays at least.
class Viewer final : public IDisplayListener {
 public:
  explicit Viewer(MediaTime shortest) : shortest_(shortest) {}

  void onDisplay(MediaTime time, Subtitle subtitle) override {
    check(time >= time_ + (isWritten_ ? shortest_ : 0));
    std::int32_t number = 0;
    for (const auto& row : subtitle.captionText()->rows) {
      check(row.number > number && row.number <= CaptionScreen::kRows);
      number = row.number;
      checkRow(row);
    }
    time_ = time;
    isWritten_ = isWritten(subtitle);
  }

 private:
  const MediaTime shortest_;
  MediaTime time_ = 0;
  bool isWritten_ = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::span bytes(data, size);
  if (bytes.empty()) return 0;
  const bool isLive = (bytes[0] & 0x80) != 0;
  const std::uint32_t service = bytes[0] % 6;
  bytes = bytes.subspan(1);

  Viewer viewer(isLive ? 0 : GrowingRows::kShortest);
  GrowingRows rows(viewer, isLive ? GrowingRows::Output::Live : GrowingRows::Output::File);
  CaptionDisplayDecoder decoder(service, rows, nullptr);
  MediaTime time = kSecond;
  while (!bytes.empty()) {
    const auto unit = bytes.subspan(1, std::min<std::size_t>(bytes[0] & 0x1F, bytes.size() - 1));
    time += (bytes[0] >> 5) * 33 * kMillisecond;
    rows.advance(time);
    decoder.decode(unit, time);
    bytes = bytes.subspan(1 + unit.size());
  }
  decoder.finish(time + 20 * kSecond);
  rows.finish();
  return 0;
}
