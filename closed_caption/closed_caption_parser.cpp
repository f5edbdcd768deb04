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
}

Subtitle ClosedCaptionParser::currentSubtitle(MediaTime time) {
  if (time != lastTime_) return Subtitle(CaptionText{});
  return Subtitle(decoder_.takeScreen());
}

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
