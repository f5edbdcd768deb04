// SPDX-License-Identifier: MIT

// Pixel buffers that are used again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "model/pixel_buffer.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

/// Hands out transparent black buffers. One that everybody else has let go of is cleared, which
/// costs its painted rows, where a new one may cost all rows. Not thread-safe: all holders of the
/// buffers are on one thread.
class PixelBufferPool {
 public:
  /// In pixels. Throws std::bad_alloc.
  std::shared_ptr<PixelBuffer> take(std::uint32_t width, std::uint32_t height);

 private:
  // Pages of five seconds and those on their way out; displays beyond high definition are rare
  // enough to be made anew.
  static constexpr std::size_t kMostBuffers = 8;
  static constexpr std::uint64_t kMostPixels = 1920 * 1080;

  std::uint32_t width_ = 0;
  std::uint32_t height_ = 0;
  std::vector<std::shared_ptr<PixelBuffer>> buffers_;  // all of this width and height
};

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
