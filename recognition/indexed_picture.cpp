// SPDX-License-Identifier: MIT
#include "recognition/indexed_picture.h"

#include <algorithm>
#include <array>

namespace korr::recognition {

namespace {

constexpr std::size_t kMostColours = 256;  // the transparent one included
constexpr std::uint8_t kLeastAlpha = 8;    // less cannot be seen

// A small table from colours to entries of the palette; open addressing.
class PaletteBuilder {
 public:
  explicit PaletteBuilder(unsigned droppedBits) : mask_(0xFFu << droppedBits & 0xFFu) {
    colours_.push_back({});
  }

  /// Nothing when there are too many.
  std::optional<std::uint8_t> entryOf(const std::uint8_t* rgba) {
    if (rgba[3] < kLeastAlpha) return std::uint8_t{0};
    const std::uint32_t key = (rgba[0] & mask_) | (rgba[1] & mask_) << 8 | (rgba[2] & mask_) << 16 |
                              (rgba[3] | ~mask_) << 24;
    if (key == lastKey_) return lastEntry_;
    std::size_t slot = key * 2654435761u >> 22;
    while (slots_[slot].entry != 0 && slots_[slot].key != key) slot = (slot + 1) % slots_.size();
    if (slots_[slot].entry == 0) {
      if (colours_.size() == kMostColours) return std::nullopt;
      slots_[slot] = {.key = key, .entry = static_cast<std::uint8_t>(colours_.size())};
      colours_.push_back({rgba[0], rgba[1], rgba[2], rgba[3]});
    }
    lastKey_ = key;
    lastEntry_ = slots_[slot].entry;
    return lastEntry_;
  }

  std::vector<Colour> take() { return std::move(colours_); }

 private:
  struct Slot {
    std::uint32_t key = 0;
    std::uint8_t entry = 0;  // 0: empty
  };

  std::uint32_t mask_;
  std::array<Slot, 1024> slots_{};
  std::vector<Colour> colours_;
  std::uint32_t lastKey_ = 0;
  std::uint8_t lastEntry_ = 0;
};

std::optional<Box> visibleBox(const SubtitleBitmap& bitmap) {
  const auto rows = bitmap.pixels->paintedRows();
  const auto end = std::min(rows.end, bitmap.height);
  Box box{.left = static_cast<std::int32_t>(bitmap.width), .top = 0, .right = 0, .bottom = 0};
  bool isEmpty = true;
  for (std::uint32_t y = rows.first; y < end; ++y) {
    const std::uint8_t* row = bitmap.pixels->data() + std::size_t{y} * bitmap.width * 4;
    std::int32_t first = 0;
    auto last = static_cast<std::int32_t>(bitmap.width);
    while (first < last && row[first * 4 + 3] < kLeastAlpha) ++first;
    if (first == last) continue;
    while (row[(last - 1) * 4 + 3] < kLeastAlpha) --last;
    box.left = std::min(box.left, first);
    box.right = std::max(box.right, last);
    if (isEmpty) box.top = static_cast<std::int32_t>(y);
    box.bottom = static_cast<std::int32_t>(y) + 1;
    isEmpty = false;
  }
  if (isEmpty) return std::nullopt;
  return box;
}

bool fill(IndexedPicture& picture, const SubtitleBitmap& bitmap, unsigned droppedBits) {
  PaletteBuilder palette(droppedBits);
  auto* out = picture.pixels.data();
  for (std::int32_t y = 0; y < picture.height; ++y) {
    const std::size_t first = static_cast<std::size_t>(picture.top + y) * bitmap.width +
                              static_cast<std::size_t>(picture.left);
    const std::uint8_t* in = bitmap.pixels->data() + first * 4;
    for (std::int32_t x = 0; x < picture.width; ++x, in += 4) {
      const auto entry = palette.entryOf(in);
      if (!entry) return false;
      *out++ = *entry;
    }
  }
  picture.palette = palette.take();
  return true;
}

}  // namespace

void Box::include(const Box& other) {
  left = std::min(left, other.left);
  top = std::min(top, other.top);
  right = std::max(right, other.right);
  bottom = std::max(bottom, other.bottom);
}

std::optional<IndexedPicture> indexPicture(const SubtitleBitmap& bitmap) {
  if (bitmap.visible == 0 || bitmap.pixels->size() == 0) return std::nullopt;
  const auto box = visibleBox(bitmap);
  if (!box) return std::nullopt;
  IndexedPicture picture;
  picture.left = box->left;
  picture.top = box->top;
  picture.width = box->width();
  picture.height = box->height();
  picture.displayWidth = static_cast<std::int32_t>(bitmap.width);
  picture.displayHeight = static_cast<std::int32_t>(bitmap.height);
  picture.pixels.resize(static_cast<std::size_t>(picture.width) *
                        static_cast<std::size_t>(picture.height));
  // With 6 bits dropped there are no more than 4 * 4 * 4 colours of 4 alphas: 256 at most, and one
  // alpha of them is the transparent one's.
  for (unsigned droppedBits = 0; !fill(picture, bitmap, droppedBits); ++droppedBits) {
  }
  return picture;
}

}  // namespace korr::recognition
