#include "burn/burn_renderer.h"

#include <utility>

namespace korr::encoding::subtitling::burn::inline v2_1 {

bool LastDrawing::isStillOn(const FrameBuffer& frame, const Subtitle& subtitle) const {
  return subtitle_ && memory_ == frame.data() && generation_ == frame.generation &&
         bounds_ == frame.bounds() && picture_ == frame.picture() && *subtitle_ == subtitle;
}

void LastDrawing::remember(const FrameBuffer& frame, Subtitle subtitle) {
  memory_ = frame.data();
  generation_ = frame.generation;
  bounds_ = frame.bounds();
  picture_ = frame.picture();
  subtitle_ = std::move(subtitle);
}

}  // namespace korr::encoding::subtitling::burn::inline v2_1
