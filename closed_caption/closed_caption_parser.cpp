// SPDX-License-Identifier: MIT
#include "closed_caption/closed_caption_parser.h"

namespace korr::encoding::subtitling::closed_caption::inline v2 {

void ClosedCaptionParser::parse(const std::uint8_t* data, std::int64_t size, MediaTime time,
                                bool /*discontinuity*/) {
  for (; size >= 3; data += 3, size -= 3) {
    const auto pair = selector_.select(std::span<const std::uint8_t, 3>(data, 3));
    if (!pair) continue;
    if (pair->isControl) {
      decoder_.executeControl(pair->bytes);
    } else {
      decoder_.executePrintable(pair->bytes);
    }
  }
  lastTime_ = time;
  if (decoder_.isFull() != isFullReported_) reportFull(time);
}

void ClosedCaptionParser::reportFull(MediaTime time) {
  isFullReported_ = !isFullReported_;
  if (!isFullReported_) return;
  log::write(logger_, log::Level::Warning,
             "captions: no code has erased the memory for %zu characters; text from %.3f s on is "
             "dropped until one does",
             CaptionDecoder::kMostCells, static_cast<double>(time) / kSecond);
}

Subtitle ClosedCaptionParser::currentSubtitle(MediaTime time) {
  if (time != lastTime_) return Subtitle(CaptionText{});
  return Subtitle(decoder_.takeScreen());
}

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
