// SPDX-License-Identifier: MIT
#include "files/picture.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

#include "util/exception.h"

namespace korr::txsub {

namespace {

namespace ttml = encoding::subtitling::ttml;
using encoding::subtitling::SubtitleBitmap;
using ttml::RgbaImage;

constexpr std::size_t kBytesPerPixel = 4;

bool isVisible(const std::uint8_t* pixel) {
  return pixel[3] != 0;
}

// The first visible pixel of a row at or after `from`, else `width`. Margins are wide, so that
// blank pixels are passed over two at a time.
std::uint32_t firstVisible(const std::uint8_t* row, std::uint32_t from, std::uint32_t width) {
  constexpr std::uint8_t kAlphas[8] = {0, 0, 0, 0xFF, 0, 0, 0, 0xFF};
  const auto mask = std::bit_cast<std::uint64_t>(kAlphas);
  for (; from + 2 <= width; from += 2) {
    std::uint64_t pair = 0;
    std::memcpy(&pair, row + from * kBytesPerPixel, sizeof pair);
    if ((pair & mask) != 0) break;
  }
  while (from < width && !isVisible(row + from * kBytesPerPixel)) ++from;
  return from;
}

// Where the last visible pixel of a row at or after `from` ends, else `from`.
std::uint32_t lastVisible(const std::uint8_t* row, std::uint32_t from, std::uint32_t width) {
  while (width > from && !isVisible(row + (width - 1) * kBytesPerPixel)) --width;
  return width;
}

template <class Value>
std::size_t hashOf(const Value* values, std::size_t count) {
  return std::hash<std::string_view>{}(
      {reinterpret_cast<const char*>(values), count * sizeof(Value)});
}

// The image's part that `area` covers.
RgbaImage crop(const RgbaImage& image, const PictureArea& area) {
  const auto inArea = [&](std::uint32_t row) {
    return std::clamp(row, area.y, area.y + area.height) - area.y;
  };
  return {.pixels = image.row(area.y) + area.x * kBytesPerPixel,
          .width = area.width,
          .height = area.height,
          .stride = image.stride,
          .paintedRows = {inArea(image.paintedRows.first), inArea(image.paintedRows.end)}};
}

}  // namespace

std::optional<PictureArea> visibleArea(const SubtitleBitmap& bitmap) {
  const RgbaImage image = ttml::imageOf(bitmap);
  std::uint32_t left = image.width;
  std::uint32_t right = 0;
  std::uint32_t top = image.height;
  std::uint32_t bottom = 0;
  for (std::uint32_t y = image.paintedRows.first; y < image.paintedRows.end; ++y) {
    const std::uint8_t* const row = image.row(y);
    const std::uint32_t first = firstVisible(row, 0, image.width);
    if (first == image.width) continue;
    left = std::min(left, first);
    right = lastVisible(row, std::max(right, first), image.width);
    top = std::min(top, y);
    bottom = y + 1;
  }
  if (left >= right) return std::nullopt;
  return PictureArea{.x = left, .y = top, .width = right - left, .height = bottom - top};
}

// Of the rows that are not blank, and where these begin and end.
PictureSet::Fingerprint PictureSet::fingerprintOf(const RgbaImage& image) {
  const auto [first, end] = image.paintedRows;
  std::vector<std::size_t> rows{first, end};
  for (std::uint32_t y = first; y < end; ++y)
    rows.push_back(hashOf(image.row(y), image.width * kBytesPerPixel));
  return {image.width, image.height, hashOf(rows.data(), rows.size())};
}

PictureSet::Picture PictureSet::add(const SubtitleBitmap& bitmap, const PictureArea& area) {
  const RgbaImage image = crop(ttml::imageOf(bitmap), area);
  const auto [entry, isNew] = numbers_.try_emplace(fingerprintOf(image), numbers_.size() + 1);
  Picture picture{.number = entry->second, .isNew = isNew, .png = {}};
  if (!isNew) return picture;
  auto png = encoder_->encode(image);
  if (!png) {
    numbers_.erase(entry);
    throw util::TessaryException("a picture of " + std::to_string(area.width) + " by " +
                                 std::to_string(area.height) + " pixels cannot be made a PNG");
  }
  picture.png = std::move(*png);
  return picture;
}

}  // namespace korr::txsub
