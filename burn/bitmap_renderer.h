// SPDX-License-Identifier: MIT

// Bitmap subtitles on a frame of any size.
#pragma once

#include "burn/burn_renderer.h"

namespace korr::encoding::subtitling::burn::inline v2_1 {

/// Stretches the display's picture over the frame's picture.
class BitmapRenderer final : public SubtitleRenderer {
 public:
  /// `container` is not owned.
  explicit BitmapRenderer(ISubtitleContainer& container) : SubtitleRenderer(&container) {}

  /// For `paint` alone.
  BitmapRenderer() : SubtitleRenderer(nullptr) {}

  void paint(FrameBuffer& frame, const Subtitle& subtitle) override;
};

}  // namespace korr::encoding::subtitling::burn::inline v2_1
