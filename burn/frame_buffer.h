// SPDX-License-Identifier: MIT

// The video frame that renderers draw on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace korr::encoding::subtitling::burn::inline v2_1 {

/// A colour as 0xAARRGGBB, not premultiplied.
using Argb = std::uint32_t;

/// Half open, in pixels.
struct Rectangle {
  std::int64_t left = 0;
  std::int64_t top = 0;
  std::int64_t right = 0;
  std::int64_t bottom = 0;

  bool isEmpty() const { return left >= right || top >= bottom; }

  friend bool operator==(const Rectangle&, const Rectangle&) = default;
};

Rectangle intersect(const Rectangle& left, const Rectangle& right);

/// A view of a frame in somebody's memory: rows top to bottom, a pixel is one 32-bit word
/// 0xAARRGGBB whose colours are premultiplied by the alpha. Drawing never leaves the frame.
class FrameBuffer {
 public:
  /// `pixels` holds `height` rows of `stride` words (>= `width`) each, the last of them of `width`
  /// at least; throws std::invalid_argument otherwise. `picture` is where the picture lies in the
  /// frame: subtitles are laid out on it.
  FrameBuffer(std::span<std::uint32_t> pixels, std::uint32_t width, std::uint32_t height,
              std::size_t stride, const Rectangle& picture);

  /// The whole of a frame without gaps.
  FrameBuffer(std::span<std::uint32_t> pixels, std::uint32_t width, std::uint32_t height);

  const Rectangle& picture() const { return picture_; }
  Rectangle bounds() const { return {0, 0, width_, height_}; }
  const std::uint32_t* data() const { return pixels_.data(); }

  /// Whether the memory still holds what a renderer drew there last, as only its owner knows: then
  /// an unchanged subtitle is not drawn again.
  bool isUntouched = false;

  /// Lays `colour` over a rectangle.
  void fill(const Rectangle& rectangle, Argb colour);

  /// Lays `colour` over the frame where `coverage` (0 to 255, `width` * `height` bytes) says so;
  /// its first byte lies at (`left`, `top`).
  void fillMask(std::int64_t left, std::int64_t top, std::uint32_t width, std::uint32_t height,
                std::span<const std::uint8_t> coverage, Argb colour);

  /// Lays one premultiplied word over the pixel, which must lie in `bounds()`.
  void blend(std::int64_t x, std::int64_t y, std::uint32_t premultiplied) {
    std::uint32_t& pixel = row(y)[x];
    pixel = over(premultiplied, pixel);
  }

 private:
  static std::uint32_t over(std::uint32_t source, std::uint32_t destination);

  std::uint32_t* row(std::int64_t y) {
    return pixels_.data() + static_cast<std::size_t>(y) * stride_;
  }

  std::span<std::uint32_t> pixels_;
  std::uint32_t width_;
  std::uint32_t height_;
  std::size_t stride_;
  Rectangle picture_;
};

/// Multiplies the four channels of a word by `factor` / 255, rounded.
constexpr std::uint32_t scaleChannels(std::uint32_t word, std::uint32_t factor) {
  // Two channels at a time; x * f / 255 rounded is (t + (t >> 8)) >> 8 with t = x * f + 128.
  constexpr std::uint32_t kPair = 0x00FF00FF;
  std::uint32_t low = (word & kPair) * factor + 0x00800080;
  std::uint32_t high = ((word >> 8) & kPair) * factor + 0x00800080;
  low = ((low + ((low >> 8) & kPair)) >> 8) & kPair;
  high = (high + ((high >> 8) & kPair)) & ~kPair;
  return low | high;
}

/// 0xAARRGGBB with its colours multiplied by its alpha.
constexpr std::uint32_t premultiply(Argb colour) {
  return (scaleChannels(colour, colour >> 24) & 0x00FFFFFF) | (colour & 0xFF000000);
}

/// The inverse of `premultiply`, up to rounding.
Argb unpremultiply(std::uint32_t word);

inline std::uint32_t FrameBuffer::over(std::uint32_t source, std::uint32_t destination) {
  return source + scaleChannels(destination, 255 - (source >> 24));
}

}  // namespace korr::encoding::subtitling::burn::inline v2_1
