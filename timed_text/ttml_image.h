// SPDX-License-Identifier: MIT

// Pictures in TTML: SMPTE-TT images (SMPTE ST 2052-1).
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "model/byte_buffer.h"
#include "model/subtitle.h"
#include "timed_text/png_encoder.h"

class TiXmlElement;

namespace korr::encoding::subtitling::ttml::inline v2_1 {

/// Keeps the PNG of the last picture, so that each is encoded once however often it is asked for.
class PngCache {
 public:
  explicit PngCache(std::unique_ptr<IPngEncoder> encoder);

  /// The PNG of a visible bitmap, good until the next call; null when it cannot be encoded, and
  /// then the cache stays as it is.
  const ByteBuffer* pngOf(const SubtitleBitmap& bitmap);

 private:
  struct Entry {
    std::uint32_t id = 0;  // the bitmap's page state
    ByteBuffer png;
  };

  std::unique_ptr<IPngEncoder> encoder_;
  std::optional<Entry> entry_;
};

/// The `head` that shows `png` over the whole of `bitmap` or, when `png` is null, nothing.
std::unique_ptr<TiXmlElement> buildImageHead(const SubtitleBitmap& bitmap, const ByteBuffer* png);

}  // namespace korr::encoding::subtitling::ttml::inline v2_1
