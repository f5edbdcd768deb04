// SPDX-License-Identifier: MIT
#include "burn/burn_renderer.h"

#include <utility>

namespace korr::encoding::subtitling::burn::inline v2_1 {

FrameBuffer& SubtitleRenderer::draw(FrameBuffer& frame, MediaTime time) {
  auto subtitle = container_->currentSubtitle(time);
  if (isStillOn(frame, subtitle)) return frame;
  paint(frame, subtitle);
  last_.emplace(Drawn{.memory = frame.data(),
                      .bounds = frame.bounds(),
                      .picture = frame.picture(),
                      .subtitle = std::move(subtitle)});
  return frame;
}

bool SubtitleRenderer::isStillOn(const FrameBuffer& frame, const Subtitle& subtitle) const {
  return frame.isUntouched && last_ && last_->memory == frame.data() &&
         last_->bounds == frame.bounds() && last_->picture == frame.picture() &&
         last_->subtitle == subtitle;
}

}  // namespace korr::encoding::subtitling::burn::inline v2_1
