// SPDX-License-Identifier: MIT

// The picture of a page while it is painted.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "dvb_subtitle/clut.h"
#include "model/pixel_buffer.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

/// Writes colours into a transparent black pixel buffer. Whatever is outside is cut off.
/// Transparent black on rows that nobody has painted costs nothing.
class Canvas {
 public:
  /// `pixels` has `width` by `height` pixels, is not owned, and outlives the canvas.
  Canvas(std::uint32_t width, std::uint32_t height, PixelBuffer& pixels)
      : width_(width), height_(height), pixels_(pixels) {}

  /// One row, to paint runs on.
  class Row {
   public:
    /// Paints `length` pixels to the right from `x` on.
    void paintRun(std::uint32_t x, std::uint32_t length, Colour colour) {
      if (x >= width_) return;
      if (!isPainted_) {
        if (colour == Colour{}) return;  // the row is so already
        canvas_.pixels_.addPaintedRows({y_, y_ + 1});
        isPainted_ = true;
      }
      length = std::min(length, width_ - x);
      const auto pixel = std::bit_cast<std::uint32_t>(colour);
      if (length == 1) {  // as most runs of text are
        pixels_[x] = pixel;
      } else {
        std::fill_n(pixels_ + x, length, pixel);
      }
      canvas_.pixelsWritten_ += length;
    }

   private:
    friend Canvas;

    Row(Canvas& canvas, std::uint32_t y) : canvas_(canvas), y_(y) {
      if (y >= canvas.height_) return;  // cut off: no pixels
      const auto painted = canvas.pixels_.paintedRows();
      isPainted_ = y >= painted.first && y < painted.end;
      width_ = canvas.width_;
      pixels_ = canvas.pixelsOfRow(y);
    }

    Canvas& canvas_;
    std::uint32_t y_;
    bool isPainted_ = false;
    std::uint32_t width_ = 0;
    std::uint32_t* pixels_ = nullptr;
  };

  /// Row `y`, which others must not paint on meanwhile.
  Row row(std::uint32_t y) { return {*this, y}; }

  /// Paints from (x, y) on, `width` to the right and `height` down.
  void fill(std::uint32_t x, std::uint32_t y, std::uint32_t width, std::uint32_t height,
            Colour colour);

  std::uint32_t width() const { return width_; }

  /// How many pixels were written, those written again counted again.
  std::uint64_t pixelsWritten() const { return pixelsWritten_; }

 private:
  std::uint32_t* pixelsOfRow(std::uint32_t y) {
    return reinterpret_cast<std::uint32_t*>(pixels_.data()) + std::size_t{y} * width_;
  }

  std::uint32_t width_;
  std::uint32_t height_;
  PixelBuffer& pixels_;
  std::uint64_t pixelsWritten_ = 0;
};

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
