// SPDX-License-Identifier: MIT
#include "model/pixel_buffer.h"

#include <cstring>
#include <limits>
#include <new>

namespace korr::encoding::subtitling::inline v2_1 {

PixelBuffer::PixelBuffer(std::uint32_t width, std::uint32_t height) {
  constexpr std::size_t kBytesPerPixel = 4;
  constexpr std::uint64_t kMostPixels = std::numeric_limits<std::ptrdiff_t>::max() / kBytesPerPixel;
  const std::uint64_t pixels = std::uint64_t{width} * height;
  if (pixels > kMostPixels) throw std::bad_alloc();
  if (pixels == 0) return;
  size_ = static_cast<std::size_t>(pixels) * kBytesPerPixel;
  rowBytes_ = std::size_t{width} * kBytesPerPixel;
  bytes_.reset(static_cast<std::uint8_t*>(std::calloc(size_, 1)));
  if (!bytes_) throw std::bad_alloc();
}

void PixelBuffer::clear() {
  if (!bytes_) return;
  std::memset(bytes_.get() + painted_.first * rowBytes_, 0,
              (painted_.end - painted_.first) * rowBytes_);
  painted_ = {};
}

}  // namespace korr::encoding::subtitling::inline v2_1
