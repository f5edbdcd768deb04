// SPDX-License-Identifier: MIT
#include "burn/bitmap_renderer.h"

#include <algorithm>

#include "util/exception.h"

namespace korr::encoding::subtitling::burn::inline v2_1 {
namespace {

// Where a sample between two neighbours lies: the first of them and the second's share of 256.
struct Between {
  std::uint32_t first = 0;
  std::uint32_t second = 0;
  std::uint32_t share = 0;
};

// The place in a line of `size` samples that the centre of pixel `index` of `stretched` falls on.
Between placeOf(std::int64_t index, std::int64_t stretched, std::uint32_t size) {
  const std::int64_t centre = ((2 * index + 1) * size * 128) / stretched - 128;  // in 1/256
  const auto position = std::clamp<std::int64_t>(centre, 0, (std::int64_t{size} - 1) * 256);
  const auto first = static_cast<std::uint32_t>(position / 256);
  return {first, std::min(first + 1, size - 1), static_cast<std::uint32_t>(position % 256)};
}

std::uint32_t mix(std::uint32_t first, std::uint32_t second, std::uint32_t share) {
  const auto channel = [&](unsigned shift) {
    const std::uint32_t a = (first >> shift) & 0xFF;
    const std::uint32_t b = (second >> shift) & 0xFF;
    return ((a * (256 - share) + b * share + 128) / 256) << shift;
  };
  return first == second ? first : channel(24) | channel(16) | channel(8) | channel(0);
}

class StretchedBitmap {
 public:
  StretchedBitmap(const SubtitleBitmap& bitmap, const Rectangle& target)
      : bitmap_(bitmap), target_(target) {}

  // Draws it into `frame`, but for the rows that are known to be transparent.
  void drawInto(FrameBuffer& frame) const {
    const auto height = target_.bottom - target_.top;
    const auto width = target_.right - target_.left;
    const auto painted = bitmap_.pixels->paintedRows();
    const auto visible = intersect(target_, frame.bounds());
    for (auto y = visible.top; y < visible.bottom; ++y) {
      const auto row = placeOf(y - target_.top, height, bitmap_.height);
      if (row.second < painted.first || row.first >= painted.end) continue;
      for (auto x = visible.left; x < visible.right; ++x) {
        const auto column = placeOf(x - target_.left, width, bitmap_.width);
        const auto pixel = mix(mixRow(column, row.first), mixRow(column, row.second), row.share);
        if (pixel != 0) frame.blend(x, y, pixel);
      }
    }
  }

 private:
  std::uint32_t mixRow(const Between& column, std::uint32_t y) const {
    return mix(pixelAt(column.first, y), pixelAt(column.second, y), column.share);
  }

  std::uint32_t pixelAt(std::uint32_t x, std::uint32_t y) const {
    const auto* rgba = bitmap_.pixels->data() + (std::size_t{y} * bitmap_.width + x) * 4;
    return premultiply((Argb{rgba[3]} << 24) | (Argb{rgba[0]} << 16) | (Argb{rgba[1]} << 8) |
                       rgba[2]);
  }

  const SubtitleBitmap& bitmap_;
  const Rectangle target_;
};

}  // namespace

void BitmapRenderer::paint(FrameBuffer& frame, const Subtitle& subtitle) {
  const SubtitleBitmap* const bitmap = subtitle.bitmap();
  if (!bitmap) throw util::TessaryException("Unexpected subtitle type");
  const bool hasPixels = bitmap->visible != 0 && bitmap->width != 0 && bitmap->height != 0;
  if (hasPixels && !frame.picture().isEmpty())
    StretchedBitmap(*bitmap, frame.picture()).drawInto(frame);
}

}  // namespace korr::encoding::subtitling::burn::inline v2_1
