// SPDX-License-Identifier: MIT
#include "burn/frame_buffer.h"

#include <algorithm>
#include <stdexcept>

namespace korr::encoding::subtitling::burn::inline v2_1 {

Rectangle intersect(const Rectangle& left, const Rectangle& right) {
  return {std::max(left.left, right.left), std::max(left.top, right.top),
          std::min(left.right, right.right), std::min(left.bottom, right.bottom)};
}

FrameBuffer::FrameBuffer(std::span<std::uint32_t> pixels, std::uint32_t width, std::uint32_t height,
                         std::size_t stride, const Rectangle& picture)
    : pixels_(pixels), width_(width), height_(height), stride_(stride), picture_(picture) {
  if (stride < width) throw std::invalid_argument("a frame's rows overlap");
  const bool isEmpty = width == 0 || height == 0;
  if (!isEmpty && (pixels.size() < width || (pixels.size() - width) / stride < height - 1))
    throw std::invalid_argument("a frame is larger than its memory");
}

FrameBuffer::FrameBuffer(std::span<std::uint32_t> pixels, std::uint32_t width, std::uint32_t height)
    : FrameBuffer(pixels, width, height, width, {0, 0, width, height}) {
}

void FrameBuffer::fill(const Rectangle& rectangle, Argb colour) {
  const auto area = intersect(rectangle, bounds());
  const auto source = premultiply(colour);
  if (area.isEmpty() || source == 0) return;
  for (auto y = area.top; y < area.bottom; ++y) {
    std::uint32_t* const pixels = row(y);
    if (colour >> 24 == 255) {
      std::fill(pixels + area.left, pixels + area.right, source);
    } else {
      for (auto x = area.left; x < area.right; ++x) pixels[x] = over(source, pixels[x]);
    }
  }
}

void FrameBuffer::fillMask(std::int64_t left, std::int64_t top, std::uint32_t width,
                           std::uint32_t height, std::span<const std::uint8_t> coverage,
                           Argb colour) {
  const auto area = intersect({left, top, left + width, top + height}, bounds());
  const auto source = premultiply(colour);
  if (area.isEmpty() || source == 0) return;
  for (auto y = area.top; y < area.bottom; ++y) {
    const std::uint8_t* const mask =
        coverage.data() + static_cast<std::size_t>(y - top) * width - left;
    std::uint32_t* const pixels = row(y);
    for (auto x = area.left; x < area.right; ++x) {
      if (mask[x] != 0) pixels[x] = over(scaleChannels(source, mask[x]), pixels[x]);
    }
  }
}

Argb unpremultiply(std::uint32_t word) {
  const std::uint32_t alpha = word >> 24;
  if (alpha == 0) return 0;
  const auto channel = [&](unsigned shift) {
    const std::uint32_t value = (((word >> shift) & 0xFF) * 255 + alpha / 2) / alpha;
    return std::min(value, 255u) << shift;
  };
  return (alpha << 24) | channel(16) | channel(8) | channel(0);
}

}  // namespace korr::encoding::subtitling::burn::inline v2_1
