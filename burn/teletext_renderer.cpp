// SPDX-License-Identifier: MIT
#include "burn/teletext_renderer.h"

#include <algorithm>
#include <string>

#include "util/exception.h"
#include "util/utf.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {
namespace {

constexpr std::int64_t kColumns = 40;
constexpr std::int64_t kRows = 25;
// Lines of the font's own height and letters of its own width fill the cells of a 4:3 picture.
constexpr double kFontToCellHeight = 0.8;
constexpr double kCellShape = 1.485;

burn::Argb argbOf(TeletextColour colour) {
  const auto code = static_cast<std::uint32_t>(colour);
  if (code > static_cast<std::uint32_t>(TeletextColour::White)) return 0xFFFFFFFF;
  // EN 300 706, table 26: the code's bits are red, green and blue.
  return 0xFF000000 | ((code & 1) * 0xFF0000) | ((code >> 1 & 1) * 0xFF00) | ((code >> 2) * 0xFF);
}

bool isDoubleWidth(TeletextSize size) {
  return size == TeletextSize::DoubleWidth || size == TeletextSize::Double;
}

bool isDoubleHeight(TeletextSize size) {
  return size == TeletextSize::DoubleHeight || size == TeletextSize::Double;
}

// The cells that show and where they start. Of double width every second one is covered by its left
// neighbour (EN 300 706, 12.2, codes 0x0E and 0x0F): either empty already, and then the code's cell
// before the first wide one is not wide, or to be left out.
struct ShownCells {
  std::u16string text;
  std::int64_t column = 0;
};

ShownCells shownCells(const TeletextText::Run& run) {
  const auto isCovered = [](const GlyphText& glyph) { return glyph.view().empty(); };
  const auto firstCovered = std::ranges::find_if(run.glyphs, isCovered) - run.glyphs.begin();
  const bool isSpread = std::cmp_less(firstCovered, run.glyphs.size());
  const std::size_t step = isDoubleWidth(run.size) && !isSpread ? 2 : 1;
  const auto first = isSpread ? static_cast<std::size_t>((firstCovered + 1) % 2) : 0;
  std::string text;
  for (std::size_t i = first; i < run.glyphs.size(); i += step) text += run.glyphs[i].view();
  return {util::utf8ToUtf16(text), run.column + static_cast<std::int64_t>(first)};
}

}  // namespace

TeletextRenderer::TeletextRenderer(ISubtitleContainer* container, burn::TextDrawing& drawing)
    : SubtitleRenderer(container), drawing_(drawing) {
  style_.family = "Lucida Console";
  style_.backgroundColour = 0xFF000000;
}

void TeletextRenderer::paint(burn::FrameBuffer& frame, const Subtitle& subtitle) {
  if (!subtitle.teletextText()) throw util::TessaryException("Unexpected subtitle type");
  drawText(frame, *subtitle.teletextText());
}

void TeletextRenderer::drawText(burn::FrameBuffer& frame, const TeletextText& text) {
  const auto& picture = frame.picture();
  const auto width = picture.right - picture.left;
  const auto height = picture.bottom - picture.top;
  const std::int64_t cellWidth = width * 8 / (10 * kColumns);
  const std::int64_t cellHeight = height * 8 / (10 * kRows);
  if (cellWidth <= 0 || cellHeight <= 0) return;
  for (const auto& row : text.rows) {
    const auto top = picture.top + height / 10 + row.number * cellHeight;
    for (const auto& run : row.runs) {
      drawRun(frame, run, {picture.left + width / 10, top, cellWidth, cellHeight});
    }
  }
}

void TeletextRenderer::drawRun(burn::FrameBuffer& frame, const TeletextText::Run& run,
                               const burn::CellGrid& cell) {
  const double widthFactor = isDoubleWidth(run.size) ? 2 : 1;
  const double heightFactor = isDoubleHeight(run.size) ? 2 : 1;
  style_.textColour = argbOf(run.colour);
  style_.size = kFontToCellHeight * static_cast<double>(cell.cellHeight);
  style_.widthScale = widthFactor * kCellShape * static_cast<double>(cell.cellWidth) /
                      static_cast<double>(cell.cellHeight);
  style_.heightScale = heightFactor * kFontToCellHeight;
  const auto shown = shownCells(run);
  drawing_.draw(frame, style_, shown.text,
                {cell.left + shown.column * cell.cellWidth, cell.top,
                 cell.cellWidth * static_cast<std::int64_t>(widthFactor),
                 cell.cellHeight * static_cast<std::int64_t>(heightFactor)});
}

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
