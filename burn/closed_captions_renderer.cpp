// SPDX-License-Identifier: MIT
#include "burn/closed_captions_renderer.h"

#include <string>

#include "util/exception.h"
#include "util/utf.h"

namespace korr::encoding::subtitling::closed_caption::inline v2 {
namespace {

constexpr double kSafeArea = 0.8;
constexpr double kMargin = 0.1;
// 34 cells fill the width, deliberately, of which captions take the first 32.
constexpr double kCellsAcross = 34;
constexpr double kRows = 15;

burn::Argb argbOf(CaptionColour colour) {
  switch (colour) {
    case CaptionColour::Green:
      return 0xFF00FF00;
    case CaptionColour::Blue:
      return 0xFF0000FF;
    case CaptionColour::Cyan:
      return 0xFF00FFFF;
    case CaptionColour::Red:
      return 0xFFFF0000;
    case CaptionColour::Yellow:
      return 0xFFFFFF00;
    case CaptionColour::Magenta:
      return 0xFFFF00FF;
    case CaptionColour::Black:
      return 0xFF000000;
    default:
      return 0xFFFFFFFF;
  }
}

burn::Argb backgroundOf(const CaptionText::TextRun& run) {
  const auto colour = argbOf(run.background) & 0x00FFFFFF;
  switch (run.backgroundOpacity) {
    case CaptionOpacity::Transparent:
      return colour;
    case CaptionOpacity::SemiTransparent:
      return colour | 0x80000000;
    default:
      return colour | 0xFF000000;
  }
}

// Italic hides underline, deliberately.
burn::FontStyle fontStyleOf(const CaptionText::TextRun& run) {
  if (run.italic) return burn::FontStyle::Italic;
  return run.underline ? burn::FontStyle::Underline : burn::FontStyle::Regular;
}

std::u16string textOf(const CaptionText::TextRun& run) {
  std::string text;
  for (const auto& glyph : run.glyphs) text += glyph.view();
  return util::utf8ToUtf16(text);
}

}  // namespace

ClosedCaptionsRenderer::Layout ClosedCaptionsRenderer::layoutOf(std::int64_t pictureWidth,
                                                                std::int64_t pictureHeight) {
  const auto width = static_cast<double>(pictureWidth);
  const auto height = static_cast<double>(pictureHeight);
  Layout layout;
  layout.cellWidth = static_cast<std::int64_t>(kSafeArea * width / kCellsAcross + 0.5);
  layout.cellHeight = static_cast<std::int64_t>(kSafeArea * height / kRows + 0.5);
  layout.left = static_cast<std::int64_t>(kMargin * width);
  layout.top = static_cast<std::int64_t>(kMargin * height) - layout.cellHeight;
  layout.fontSize =
      static_cast<double>(static_cast<std::int64_t>(0.8 * static_cast<double>(layout.cellHeight)));
  return layout;
}

ClosedCaptionsRenderer::ClosedCaptionsRenderer(ISubtitleContainer* container,
                                               burn::TextDrawing& drawing)
    : SubtitleRenderer(container), drawing_(drawing) {
  style_.family = "Lucida Console";
}

void ClosedCaptionsRenderer::paint(burn::FrameBuffer& frame, const Subtitle& subtitle) {
  if (!subtitle.captionText()) throw util::TessaryException("Unexpected subtitle type");
  drawText(frame, *subtitle.captionText());
}

void ClosedCaptionsRenderer::drawText(burn::FrameBuffer& frame, const CaptionText& text) {
  const auto& picture = frame.picture();
  layout_ = layoutOf(picture.right - picture.left, picture.bottom - picture.top);
  if (layout_.cellWidth <= 0 || layout_.cellHeight <= 0) return;
  style_.size = layout_.fontSize;
  style_.widthScale =
      static_cast<double>(layout_.cellWidth) / static_cast<double>(layout_.cellHeight) * 1.485;
  style_.heightScale = 0.8;
  for (const auto& row : text.rows) {
    const auto top = picture.top + row.number * layout_.cellHeight + layout_.top;
    for (const auto& run : row.runs) drawRun(frame, run, top);
  }
}

void ClosedCaptionsRenderer::drawRun(burn::FrameBuffer& frame, const CaptionText::TextRun& run,
                                     std::int64_t top) {
  if (run.glyphs.empty()) return;
  style_.textColour = argbOf(run.foreground);
  style_.backgroundColour = backgroundOf(run);
  style_.fontStyle = fontStyleOf(run);
  const auto left = frame.picture().left + run.column * layout_.cellWidth + layout_.left;
  drawing_.draw(frame, style_, textOf(run), {left, top, layout_.cellWidth, layout_.cellHeight});
}

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
