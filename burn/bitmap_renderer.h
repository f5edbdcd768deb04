// Bitmap subtitles on a frame of any size.
#pragma once

#include "burn/burn_renderer.h"
#include "model/interfaces.h"

namespace korr::encoding::subtitling::burn::inline v2_1 {

/// Stretches the display's picture over the frame's picture.
class BitmapRenderer final : public BurnRenderer {
 public:
  explicit BitmapRenderer(ISubtitleContainer& container) : container_(container) {}

  FrameBuffer& draw(FrameBuffer& frame, MediaTime time) override;

 private:
  ISubtitleContainer& container_;
  LastDrawing last_;
};

}  // namespace korr::encoding::subtitling::burn::inline v2_1
