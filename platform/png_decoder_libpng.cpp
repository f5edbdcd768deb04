// SPDX-License-Identifier: MIT
#include <png.h>

#include "platform/png_decoder.h"

namespace korr::platform::inline v2_1 {

std::optional<DecodedPng> decodePng(std::span<const std::uint8_t> png) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_memory(&image, png.data(), png.size())) return std::nullopt;
  if (std::uint64_t{image.width} * image.height > kMaximumPngPixels) {
    png_image_free(&image);
    return std::nullopt;
  }
  image.format = PNG_FORMAT_RGBA;
  DecodedPng decoded{.width = image.width, .height = image.height, .rgba = {}};
  decoded.rgba.resize(PNG_IMAGE_SIZE(image));
  if (!png_image_finish_read(&image, nullptr, decoded.rgba.data(), 0, nullptr)) return std::nullopt;
  return decoded;
}

}  // namespace korr::platform::inline v2_1
