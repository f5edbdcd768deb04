// SPDX-License-Identifier: MIT

// A subtitle's picture in the colours that it was drawn with.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "model/subtitle.h"

namespace korr::recognition {

using encoding::subtitling::SubtitleBitmap;

/// Not premultiplied; 255 is opaque.
struct Colour {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  std::uint8_t alpha = 0;

  friend bool operator==(const Colour&, const Colour&) = default;
};

/// Pixels: the first one inside, and the first one outside again.
struct Box {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t right = 0;
  std::int32_t bottom = 0;

  std::int32_t width() const { return right - left; }
  std::int32_t height() const { return bottom - top; }
  void include(const Box& other);

  friend bool operator==(const Box&, const Box&) = default;
};

/// The part of a display that can be seen, in at most 255 colours besides the transparent one.
struct IndexedPicture {
  std::int32_t left = 0;  ///< of the display's pixels
  std::int32_t top = 0;
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::int32_t displayWidth = 0;
  std::int32_t displayHeight = 0;
  std::vector<Colour> palette;       ///< entry 0 is everything that cannot be seen
  std::vector<std::uint8_t> pixels;  ///< width * height entries of the palette

  std::uint8_t at(std::int32_t x, std::int32_t y) const {
    return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                  static_cast<std::size_t>(x)];
  }
};

/// Nothing when nothing can be seen. A picture of more colours loses the lowest bits of each until
/// the palette holds them.
std::optional<IndexedPicture> indexPicture(const SubtitleBitmap& bitmap);

}  // namespace korr::recognition
