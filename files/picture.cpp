// SPDX-License-Identifier: MIT
#include "files/picture.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
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

// Of two pixels side by side. Margins are wide, so that blank ones are passed over two at a time.
bool isEitherVisible(const std::uint8_t* pixels) {
  constexpr std::uint8_t kAlphas[8] = {0, 0, 0, 0xFF, 0, 0, 0, 0xFF};
  std::uint64_t pair = 0;
  std::memcpy(&pair, pixels, sizeof pair);
  return (pair & std::bit_cast<std::uint64_t>(kAlphas)) != 0;
}

// The first visible pixel of a row at or after `from`, else `width`.
std::uint32_t firstVisible(const std::uint8_t* row, std::uint32_t from, std::uint32_t width) {
  for (; from + 2 <= width; from += 2) {
    if (isEitherVisible(row + from * kBytesPerPixel)) break;
  }
  while (from < width && !isVisible(row + from * kBytesPerPixel)) ++from;
  return from;
}

// Where the last visible pixel of a row at or after `from` ends, else `from`.
std::uint32_t lastVisible(const std::uint8_t* row, std::uint32_t from, std::uint32_t width) {
  for (; from + 2 <= width; width -= 2) {
    if (isEitherVisible(row + (width - 2) * kBytesPerPixel)) break;
  }
  while (width > from && !isVisible(row + (width - 1) * kBytesPerPixel)) --width;
  return width;
}

// Of the bytes of a row. Four sums at a time, as one alone would wait for its multiplications.
std::uint64_t hashOf(const std::uint8_t* bytes, std::size_t size) {
  constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;  // 2^64 over the golden ratio, odd
  const auto mix = [](std::uint64_t sum, std::uint64_t word) {
    const std::uint64_t product = (sum ^ word) * kFactor;
    return product ^ product >> 32;
  };
  std::array<std::uint64_t, 4> sums{1, 2, 3, 4};
  for (; size >= sizeof sums; bytes += sizeof sums, size -= sizeof sums) {
    std::array<std::uint64_t, 4> words;
    std::memcpy(words.data(), bytes, sizeof words);
    for (std::size_t i = 0; i < sums.size(); ++i) sums[i] = mix(sums[i], words[i]);
  }
  std::array<std::uint64_t, 4> rest{};
  std::memcpy(rest.data(), bytes, size);
  std::uint64_t hash = size;
  for (std::size_t i = 0; i < sums.size(); ++i) hash = mix(hash, mix(sums[i], rest[i]));
  return hash;
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
  std::vector<std::uint64_t> rows{first, end};
  for (std::uint32_t y = first; y < end; ++y)
    rows.push_back(hashOf(image.row(y), image.width * kBytesPerPixel));
  return {image.width, image.height,
          hashOf(reinterpret_cast<const std::uint8_t*>(rows.data()),
                 rows.size() * sizeof rows.front())};
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
