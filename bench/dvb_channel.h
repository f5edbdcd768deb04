// SPDX-License-Identifier: MIT

// Pictures on their way through a DVB encoder and our decoder.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "model/subtitle.h"

namespace korr::bench {

/// One picture, not premultiplied RGBA, as a renderer made it.
struct RenderedPicture {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::span<const std::uint8_t> rgba;
};

/// The colours of a channel: those of its first pictures, brought down to a few.
class ChannelPalette {
 public:
  struct Entry {
    std::uint8_t red = 0, green = 0, blue = 0, alpha = 0;
  };

  /// `count` entries at most, the transparent one included.
  ChannelPalette(const std::vector<RenderedPicture>& pictures, std::size_t count);

  std::uint8_t nearest(const std::uint8_t* rgba);
  const std::vector<Entry>& entries() const { return entries_; }

 private:
  std::vector<Entry> entries_;
  std::vector<std::uint32_t> keys_;
  std::vector<std::uint8_t> cached_;
};

/// Which encoder makes the stream.
enum class ChannelEncoder { Own, Ffmpeg };

/// Encodes a picture and decodes it again.
encoding::subtitling::SubtitleBitmap throughDvb(const RenderedPicture& picture,
                                                ChannelPalette& palette, ChannelEncoder encoder);

}  // namespace korr::bench
