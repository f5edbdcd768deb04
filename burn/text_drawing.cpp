// SPDX-License-Identifier: MIT
#include "burn/text_drawing.h"

#include <algorithm>
#include <utility>

namespace korr::encoding::subtitling::burn::inline v2_1 {
namespace {

// Beyond this the shapes are forgotten and drawn anew: subtitles never come near it.
constexpr std::size_t kMaximumCachedBytes = 16 << 20;

constexpr bool isCombining(char16_t unit) {
  return (unit >= 0x0300 && unit <= 0x036F) || (unit >= 0x0591 && unit <= 0x05BD) ||
         (unit >= 0x064B && unit <= 0x0652) || (unit >= 0xDC00 && unit <= 0xDFFF);
}

}  // namespace

std::vector<std::u16string_view> lettersOf(std::u16string_view text) {
  std::vector<std::u16string_view> letters;
  for (std::size_t start = 0; start < text.size();) {
    std::size_t end = start + 1;
    while (end < text.size() && isCombining(text[end])) ++end;
    letters.push_back(text.substr(start, end - start));
    start = end;
  }
  return letters;
}

TextDrawing::TextDrawing(std::unique_ptr<IGlyphRasteriser> rasteriser)
    : rasteriser_(std::move(rasteriser)) {
}

void TextDrawing::draw(FrameBuffer& frame, const TextStyle& style, std::u16string_view text,
                       const CellGrid& grid) {
  if (grid.cellWidth <= 0 || grid.cellHeight <= 0) return;
  const auto letters = lettersOf(text);
  const auto right = grid.left + static_cast<std::int64_t>(letters.size()) * grid.cellWidth;
  const auto bottom = grid.top + grid.cellHeight;
  frame.fill({grid.left, grid.top, right, bottom}, style.backgroundColour);

  const FontFace face{style.family, style.size, style.widthScale, style.heightScale,
                      style.fontStyle == FontStyle::Italic};
  Shapes& shapes = shapesOf(face);
  auto pen = grid.left;
  for (const auto letter : letters) {
    const auto& shape = shapeOf(letter, shapes, face);
    frame.fillMask(pen + shape.left, grid.top + shape.top, shape.width, shape.height,
                   shape.coverage, style.textColour);
    pen += grid.cellWidth;
  }

  if (style.fontStyle == FontStyle::Underline) {
    const auto thickness = std::max<std::int64_t>(1, grid.cellHeight / 16);
    frame.fill({grid.left, bottom - 2 * thickness, right, bottom - thickness}, style.textColour);
  }
}

TextDrawing::Shapes& TextDrawing::shapesOf(const FontFace& face) {
  if (cachedBytes_ > kMaximumCachedBytes) {
    faces_.clear();
    cachedBytes_ = 0;
  }
  return faces_[face];
}

const GlyphMask& TextDrawing::shapeOf(std::u16string_view letter, Shapes& shapes,
                                      const FontFace& face) {
  const auto known = shapes.find(letter);
  if (known != shapes.end()) return known->second;
  auto shape = rasteriser_->rasterise(letter, face);
  cachedBytes_ += sizeof(Shapes::value_type) + shape.coverage.size();
  return shapes.emplace(letter, std::move(shape)).first->second;
}

}  // namespace korr::encoding::subtitling::burn::inline v2_1
