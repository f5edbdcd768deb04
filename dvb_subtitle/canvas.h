// The picture of a page while it is painted.
#pragma once

#include <cstdint>
#include <memory>

#include "core/pixel_buffer.h"
#include "dvb_subtitle/clut.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

/// Writes colours into a new, transparent black pixel buffer. Whatever is outside is cut off.
/// Transparent black on rows that nobody has painted costs nothing.
class Canvas {
 public:
  /// In pixels. Throws std::bad_alloc.
  Canvas(std::uint32_t width, std::uint32_t height)
      : width_(width), height_(height), pixels_(std::make_shared<PixelBuffer>(width, height)) {}

  /// Paints from (x, y) on, `width` to the right and `height` down.
  void fill(std::uint32_t x, std::uint32_t y, std::uint32_t width, std::uint32_t height,
            Colour colour);

  /// How many pixels were written, those written again counted again.
  std::uint64_t pixelsWritten() const { return pixelsWritten_; }

  std::shared_ptr<const PixelBuffer> pixels() const { return pixels_; }

 private:
  std::uint32_t width_;
  std::uint32_t height_;
  std::shared_ptr<PixelBuffer> pixels_;
  std::uint64_t pixelsWritten_ = 0;
};

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
