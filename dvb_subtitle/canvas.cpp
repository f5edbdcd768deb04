// SPDX-License-Identifier: MIT
#include "dvb_subtitle/canvas.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

void Canvas::fill(std::uint32_t x, std::uint32_t y, std::uint32_t width, std::uint32_t height,
                  Colour colour) {
  if (x >= width_ || y >= height_) return;
  width = std::min(width, width_ - x);
  PixelBuffer::RowRange rows{y, y + std::min(height, height_ - y)};
  if (colour == Colour{}) {  // the other rows are so already
    const auto painted = pixels_.paintedRows();
    rows.first = std::max(rows.first, painted.first);
    rows.end = std::min(rows.end, painted.end);
  }
  if (rows.first >= rows.end || width == 0) return;
  pixels_.addPaintedRows(rows);

  const auto pixel = std::bit_cast<std::uint32_t>(colour);
  for (std::uint32_t line = rows.first; line < rows.end; ++line)
    std::fill_n(pixelsOfRow(line) + x, width, pixel);
  pixelsWritten_ += std::uint64_t{width} * (rows.end - rows.first);
}

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
