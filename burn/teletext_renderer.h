// SPDX-License-Identifier: MIT

// Teletext subtitles in video frames.
#pragma once

#include "burn/burn_renderer.h"
#include "burn/text_drawing.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {

/// Draws the boxes of a page on a grid of 40 by 25 cells over the inner 80 % of the picture.
class TeletextRenderer final : public burn::SubtitleRenderer {
 public:
  /// Neither `container`, the teletext parser's, nor `drawing` is owned.
  TeletextRenderer(ISubtitleContainer& container, burn::TextDrawing& drawing)
      : TeletextRenderer(&container, drawing) {}

  /// For `paint` alone.
  explicit TeletextRenderer(burn::TextDrawing& drawing) : TeletextRenderer(nullptr, drawing) {}

  void paint(burn::FrameBuffer& frame, const Subtitle& subtitle) override;

 private:
  TeletextRenderer(ISubtitleContainer* container, burn::TextDrawing& drawing);

  void drawText(burn::FrameBuffer& frame, const TeletextText& text);
  void drawRun(burn::FrameBuffer& frame, const TeletextText::Run& run, const burn::CellGrid& cell);

  burn::TextDrawing& drawing_;
  burn::TextStyle style_;
};

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
