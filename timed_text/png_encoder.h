// SPDX-License-Identifier: MIT

// PNG files from pixels, by whatever the platform offers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "model/byte_buffer.h"
#include "model/subtitle.h"

namespace korr::encoding::subtitling::ttml::inline v2_1 {

/// A rectangle of RGBA pixels that belongs to somebody else: bytes R, G, B, A, rows top to bottom.
struct RgbaImage {
  const std::uint8_t* pixels = nullptr;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::size_t stride = 0;  ///< bytes from one row to the next
  /// Rows outside this range are known to be transparent black.
  PixelBuffer::RowRange paintedRows;

  const std::uint8_t* row(std::uint32_t y) const { return pixels + y * stride; }
};

/// The pixels of a bitmap subtitle, which must outlive the result.
inline RgbaImage imageOf(const SubtitleBitmap& bitmap) {
  return {.pixels = bitmap.pixels->data(),
          .width = bitmap.width,
          .height = bitmap.height,
          .stride = std::size_t{bitmap.width} * 4,
          .paintedRows = bitmap.pixels->paintedRows()};
}

class IPngEncoder {
 public:
  virtual ~IPngEncoder() = default;

  /// The image as a PNG file, colour and alpha as they are; nothing when the platform fails.
  virtual std::optional<ByteBuffer> encode(const RgbaImage& image) = 0;
};

/// The platform's encoder. Whatever library it needs runs for as long as the encoder lives.
std::unique_ptr<IPngEncoder> createPngEncoder();

}  // namespace korr::encoding::subtitling::ttml::inline v2_1
