#include <png.h>

#include "tests/platform/decode_png.h"

namespace korr::test {

std::optional<DecodedPng> decodePng(const encoding::subtitling::ByteBuffer& png) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_memory(&image, png.data(), png.size())) return std::nullopt;
  image.format = PNG_FORMAT_RGBA;
  DecodedPng decoded{.width = image.width, .height = image.height, .rgba = {}};
  decoded.rgba.resize(PNG_IMAGE_SIZE(image));
  if (!png_image_finish_read(&image, nullptr, decoded.rgba.data(), 0, nullptr)) return std::nullopt;
  return decoded;
}

}  // namespace korr::test
