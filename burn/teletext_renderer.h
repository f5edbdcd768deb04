// Teletext subtitles in video frames.
#pragma once

#include "burn/burn_renderer.h"
#include "burn/text_drawing.h"
#include "model/interfaces.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {

/// Draws the boxes of a page on a grid of 40 by 25 cells over the inner 80 % of the picture.
class TeletextRenderer final : public burn::BurnRenderer {
 public:
  /// Neither `container`, the teletext parser's, nor `drawing` is owned.
  TeletextRenderer(ISubtitleContainer& container, burn::TextDrawing& drawing);

  burn::FrameBuffer& draw(burn::FrameBuffer& frame, MediaTime time) override;

 private:
  void drawText(burn::FrameBuffer& frame, const TeletextText& text);
  void drawRun(burn::FrameBuffer& frame, const TeletextText::Run& run, const burn::CellGrid& cell);

  ISubtitleContainer& container_;
  burn::TextDrawing& drawing_;
  burn::TextStyle style_;
  burn::LastDrawing last_;
};

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
