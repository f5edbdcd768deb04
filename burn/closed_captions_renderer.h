// SPDX-License-Identifier: MIT

// Closed captions in video frames.
#pragma once

#include "burn/burn_renderer.h"
#include "burn/text_drawing.h"

namespace korr::encoding::subtitling::closed_caption::inline v2 {

/// Draws caption screens on a grid of 34 by 15 cells over the inner 80 % of the picture.
class ClosedCaptionsRenderer final : public burn::SubtitleRenderer {
 public:
  /// The grid of one picture size, in pixels from the picture's corner.
  struct Layout {
    std::int64_t cellWidth = 0;
    std::int64_t cellHeight = 0;
    std::int64_t left = 0;  ///< of column 0
    std::int64_t top = 0;   ///< of the row above row 1
    double fontSize = 0;    ///< points

    friend bool operator==(const Layout&, const Layout&) = default;
  };

  static Layout layoutOf(std::int64_t pictureWidth, std::int64_t pictureHeight);

  /// Neither `container`, the caption parser's, nor `drawing` is owned.
  ClosedCaptionsRenderer(ISubtitleContainer& container, burn::TextDrawing& drawing)
      : ClosedCaptionsRenderer(&container, drawing) {}

  /// For `paint` alone.
  explicit ClosedCaptionsRenderer(burn::TextDrawing& drawing)
      : ClosedCaptionsRenderer(nullptr, drawing) {}

  void paint(burn::FrameBuffer& frame, const Subtitle& subtitle) override;

 private:
  ClosedCaptionsRenderer(ISubtitleContainer* container, burn::TextDrawing& drawing);

  void drawText(burn::FrameBuffer& frame, const CaptionText& text);
  void drawRun(burn::FrameBuffer& frame, const CaptionText::TextRun& run, std::int64_t top);

  burn::TextDrawing& drawing_;
  burn::TextStyle style_;
  Layout layout_ = layoutOf(720, 576);
};

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
