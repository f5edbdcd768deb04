// SPDX-License-Identifier: MIT
#include "disc_subtitle/dvd_display_decoder.h"

#include <algorithm>
#include <utility>

namespace korr::encoding::subtitling::disc::inline v2_1 {

namespace {

constexpr MediaTime kWithoutEnd = 30 * kDay;

MediaTime timeOf(std::uint32_t delay) {
  return MediaTime{delay} * 1024 * kSecond / 90'000;
}

}  // namespace

void DvdDisplayDecoder::decode(std::span<const std::uint8_t> unit, MediaTime time) {
  if (!unit_.empty() && time != unitTime_) {
    warn("a sub-picture is cut short; left out");
    unit_.clear();
  }
  unitTime_ = time;
  unit_.insert(unit_.end(), unit.begin(), unit.end());
  const auto size = sizeOfSubPicture(unit_);
  if (!size || unit_.size() < *size)
    return;  // the rest is to come; units have 65,535 bytes at most
  const auto whole = std::exchange(unit_, {});
  take(std::span(whole).first(*size), unitTime_);
}

void DvdDisplayDecoder::take(std::span<const std::uint8_t> unit, MediaTime time) {
  settle(time);
  changes_.clear();
  const auto picture = parseSubPicture(unit);
  if (!picture) return warn("a sub-picture that shows nothing; left out");
  const auto codes = pixelsOf(*picture, unit);
  for (const auto& step : picture->steps) {
    auto bitmap = step.isShown ? paint(*picture, step.style, codes) : SubtitleBitmap{};
    bitmap.start = time + timeOf(step.delay);
    bitmap.end = bitmap.start + kWithoutEnd;
    changes_.push_back({.time = bitmap.start, .bitmap = std::move(bitmap)});
  }
}

// Brightness grows with the code, as libraries guess too; emphasis is what is left.
DvdPalette DvdDisplayDecoder::paletteFor(const SubPictureStyle& style) const {
  if (setup_.palette) return *setup_.palette;
  std::vector<std::uint8_t> visible;
  for (std::size_t i = 0; i < style.alphas.size(); ++i) {
    const auto colour = style.colours[i];
    const bool isNew = std::ranges::find(visible, colour) == visible.end();
    if (style.alphas[i] != 0 && isNew) visible.push_back(colour);
  }
  DvdPalette palette{};
  for (std::size_t i = 0; i < visible.size(); ++i) {
    const auto level = visible.size() == 1
                           ? std::uint8_t{255}
                           : static_cast<std::uint8_t>(i * 255 / (visible.size() - 1));
    palette[visible[i]] = {level, level, level};
  }
  return palette;
}

SubtitleBitmap DvdDisplayDecoder::paint(const SubPicture& picture, const SubPictureStyle& style,
                                        const std::vector<std::uint8_t>& codes) {
  SubtitleBitmap bitmap;
  bitmap.visible = 1;
  bitmap.pageState = ++pageState_;
  bitmap.width = setup_.width;
  bitmap.height = setup_.height;
  auto pixels = std::make_shared<PixelBuffer>(bitmap.width, bitmap.height);
  const auto palette = paletteFor(style);
  const auto& area = picture.area;
  const std::size_t stride = area.right - area.left + 1;
  const std::uint32_t right = std::min(area.right + 1, bitmap.width);
  const std::uint32_t bottom = std::min(area.bottom + 1, bitmap.height);
  if (area.top < bottom) pixels->addPaintedRows({area.top, bottom});
  for (std::uint32_t y = area.top; y < bottom; ++y) {
    for (std::uint32_t x = area.left; x < right; ++x) {
      const auto code = codes[(y - area.top) * stride + (x - area.left)];
      if (style.alphas[code] == 0) continue;
      const auto& colour = palette[style.colours[code]];
      auto* const to = pixels->data() + (std::size_t{y} * bitmap.width + x) * 4;
      std::copy(colour.begin(), colour.end(), to);
      to[3] = static_cast<std::uint8_t>(style.alphas[code] * 17);
    }
  }
  bitmap.pixels = std::move(pixels);
  return bitmap;
}

void DvdDisplayDecoder::settle(MediaTime until) {
  while (!changes_.empty() && changes_.front().time < until) {
    auto change = std::move(changes_.front());
    changes_.pop_front();
    tell(std::move(change));
  }
}

void DvdDisplayDecoder::tell(Change change) {
  lastTime_ = std::max(change.time, lastTime_);
  isShown_ = change.bitmap.visible != 0;
  listener_.onDisplay(lastTime_, Subtitle(std::move(change.bitmap)));
}

void DvdDisplayDecoder::finish(MediaTime end) {
  if (!unit_.empty()) warn("a sub-picture is cut short; left out");
  unit_.clear();
  while (!changes_.empty()) settle(changes_.front().time + 1);
  if (isShown_) tell({.time = std::max(end, lastTime_), .bitmap = {}});
}

void DvdDisplayDecoder::warn(const std::string& what) {
  log::write(logger_, log::Level::Warning, "DVD subtitles: %s", what.c_str());
}

}  // namespace korr::encoding::subtitling::disc::inline v2_1
