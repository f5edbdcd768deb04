// SPDX-License-Identifier: MIT
#include "dvb_subtitle/pixel_buffer_pool.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

std::shared_ptr<PixelBuffer> PixelBufferPool::take(std::uint32_t width, std::uint32_t height) {
  if (width != width_ || height != height_) {
    buffers_.clear();
    width_ = width;
    height_ = height;
  }
  for (const auto& buffer : buffers_) {
    if (buffer.use_count() != 1) continue;
    buffer->clear();
    return buffer;
  }
  auto buffer = std::make_shared<PixelBuffer>(width, height);
  if (buffers_.size() < kMostBuffers && std::uint64_t{width} * height <= kMostPixels)
    buffers_.push_back(buffer);
  return buffer;
}

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
