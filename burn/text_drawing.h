// SPDX-License-Identifier: MIT

// Text on a grid of cells.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "burn/frame_buffer.h"
#include "burn/glyph_rasteriser.h"
#include "burn/text_style.h"

namespace korr::encoding::subtitling::burn::inline v2_1 {

/// Splits text into letters: code points with the combining marks that follow them.
std::vector<std::u16string_view> lettersOf(std::u16string_view text);

/// A position on the frame and the size of one letter's cell, in pixels.
struct CellGrid {
  std::int64_t left = 0;
  std::int64_t top = 0;
  std::int64_t cellWidth = 0;
  std::int64_t cellHeight = 0;
};

/// Draws strings and remembers the shapes of letters. Not thread-safe.
class TextDrawing {
 public:
  explicit TextDrawing(std::unique_ptr<IGlyphRasteriser> rasteriser);

  /// Draws `text` one letter a cell, from (`grid.left`, `grid.top`) to the right, on a box of its
  /// cells. Whatever the font, columns line up.
  void draw(FrameBuffer& frame, const TextStyle& style, std::u16string_view text,
            const CellGrid& grid);

 private:
  using Shapes = std::map<std::u16string, GlyphMask, std::less<>>;

  const GlyphMask& shapeOf(std::u16string_view letter, Shapes& shapes, const FontFace& face);
  Shapes& shapesOf(const FontFace& face);

  std::unique_ptr<IGlyphRasteriser> rasteriser_;
  std::map<FontFace, Shapes> faces_;
  std::size_t cachedBytes_ = 0;
};

}  // namespace korr::encoding::subtitling::burn::inline v2_1
