// The picture of a page while it is painted.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "core/pixel_buffer.h"
#include "dvb_subtitle/clut.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

/// Writes colours into a transparent black pixel buffer. Whatever is outside is cut off.
/// Transparent black on rows that nobody has painted costs nothing.
class Canvas {
 public:
  /// `pixels` has `width` by `height` pixels, is not owned, and outlives the canvas.
  Canvas(std::uint32_t width, std::uint32_t height, PixelBuffer& pixels)
      : width_(width), height_(height), pixels_(pixels) {}

  /// Paints `length` pixels to the right from (x, y) on.
  void paintRun(std::uint32_t x, std::uint32_t y, std::uint32_t length, Colour colour) {
    if (x >= width_ || y >= height_) return;
    const auto painted = pixels_.paintedRows();
    if (y < painted.first || y >= painted.end) {
      if (colour == Colour{}) return;  // the row is so already
      pixels_.addPaintedRows({y, y + 1});
    }
    length = std::min(length, width_ - x);
    const auto pixel = std::bit_cast<std::uint32_t>(colour);
    std::uint32_t* const first = row(y) + x;
    if (length == 1) {  // as most runs of text are
      *first = pixel;
    } else {
      std::fill_n(first, length, pixel);
    }
    pixelsWritten_ += length;
  }

  /// Paints from (x, y) on, `width` to the right and `height` down.
  void fill(std::uint32_t x, std::uint32_t y, std::uint32_t width, std::uint32_t height,
            Colour colour);

  /// How many pixels were written, those written again counted again.
  std::uint64_t pixelsWritten() const { return pixelsWritten_; }

 private:
  std::uint32_t* row(std::uint32_t y) {
    return reinterpret_cast<std::uint32_t*>(pixels_.data()) + std::size_t{y} * width_;
  }

  std::uint32_t width_;
  std::uint32_t height_;
  PixelBuffer& pixels_;
  std::uint64_t pixelsWritten_ = 0;
};

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
