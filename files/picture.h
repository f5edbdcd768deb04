// SPDX-License-Identifier: MIT

// Pictures of bitmap subtitles on their way into files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <tuple>

#include "model/byte_buffer.h"
#include "model/subtitle.h"
#include "timed_text/png_encoder.h"

namespace korr::txsub {

/// Pixels of the display.
struct PictureArea {
  std::uint32_t x = 0;
  std::uint32_t y = 0;
  std::uint32_t width = 0;
  std::uint32_t height = 0;

  friend bool operator==(const PictureArea&, const PictureArea&) = default;
};

/// The smallest area outside which nothing can be seen; nothing when nothing can be seen at all.
std::optional<PictureArea> visibleArea(const encoding::subtitling::SubtitleBitmap& bitmap);

/// Encodes pictures and numbers them, equal ones alike: those are not encoded again, whatever came
/// between. Remembers a few bytes per picture.
class PictureSet {
 public:
  using ByteBuffer = encoding::subtitling::ByteBuffer;

  struct Picture {
    std::size_t number = 0;  ///< from 1
    bool isNew = false;      ///< the first of this number
    ByteBuffer png;          ///< of a new one
  };

  /// The picture that `area` of `bitmap` shows. Throws util::TessaryException when it cannot be
  /// encoded.
  Picture add(const encoding::subtitling::SubtitleBitmap& bitmap, const PictureArea& area);

 private:
  // Width, height and a hash of the pixels: two pictures of 10,000 are taken for one once in 10^11
  // recordings.
  using Fingerprint = std::tuple<std::uint32_t, std::uint32_t, std::uint64_t>;

  static Fingerprint fingerprintOf(const encoding::subtitling::ttml::RgbaImage& image);

  std::unique_ptr<encoding::subtitling::ttml::IPngEncoder> encoder_ =
      encoding::subtitling::ttml::createPngEncoder();
  std::map<Fingerprint, std::size_t> numbers_;
};

}  // namespace korr::txsub
