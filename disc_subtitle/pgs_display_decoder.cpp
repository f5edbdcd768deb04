// SPDX-License-Identifier: MIT
#include "disc_subtitle/pgs_display_decoder.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace korr::encoding::subtitling::disc::inline v2_1 {

namespace {

constexpr std::uint32_t kMostPixels = 4096;  // of a side

// Nothing that is drawn ends by itself; the next composition ends it.
constexpr MediaTime kWithoutEnd = 30 * kDay;

void paintRow(std::uint8_t* row, std::uint32_t first, std::uint32_t end,
              const std::array<std::uint8_t, 4>& colour) {
  if (colour[3] == 0) return;
  for (std::uint32_t x = first; x < end; ++x)
    std::memcpy(row + std::size_t{x} * 4, colour.data(), 4);
}

// The part of an object that `place` shows, cut to the display.
void paintObject(PixelBuffer& pixels, const PgsComposition& display, const PgsObject& object,
                 const PgsPlace& place, const PgsColours& colours) {
  const PgsArea crop = place.crop.value_or(PgsArea{0, 0, object.width, object.height});
  if (place.x >= display.width || place.y >= display.height) return;
  const std::uint32_t width = std::min(crop.width, display.width - place.x);
  const std::uint32_t height = std::min(crop.height, display.height - place.y);
  pixels.addPaintedRows({place.y, place.y + height});
  std::span<const std::uint8_t> data = object.data;
  std::uint32_t x = 0, y = 0;
  while (y < object.height && y < crop.y + height) {
    const auto run = takeRun(data);
    if (!run) break;
    if (run->count == 0) {
      x = 0;
      ++y;
      continue;
    }
    const std::uint32_t end = std::min(x + run->count, object.width);
    if (y >= crop.y) {
      const std::uint32_t first = std::clamp(x, crop.x, crop.x + width) - crop.x;
      const std::uint32_t last = std::clamp(end, crop.x, crop.x + width) - crop.x;
      const std::size_t row = place.y + (y - crop.y);
      paintRow(pixels.data() + (row * display.width + place.x) * 4, first, last,
               colours[run->entry]);
    }
    x = end;
  }
}

bool showSame(const SubtitleBitmap& left, const SubtitleBitmap& right) {
  if (left.visible != right.visible || left.width != right.width || left.height != right.height)
    return false;
  const auto rows = left.pixels->paintedRows();
  if (rows != right.pixels->paintedRows()) return false;
  const std::size_t stride = std::size_t{left.width} * 4;
  return rows.first == rows.end || std::memcmp(left.pixels->data() + rows.first * stride,
                                               right.pixels->data() + rows.first * stride,
                                               (rows.end - rows.first) * stride) == 0;
}

}  // namespace

void PgsDisplayDecoder::decode(std::span<const std::uint8_t> unit, MediaTime time) {
  while (!unit.empty()) {
    const auto segment = takeSegment(unit);
    if (!segment) return warn("a segment is cut short; left out");
    take(*segment, time);
  }
}

void PgsDisplayDecoder::take(const PgsSegment& segment, MediaTime time) {
  switch (segment.type) {
    case PgsSegmentType::Composition:
      return begin(segment.body, time);
    case PgsSegmentType::Palette:
      if (const auto palette = parsePalette(segment.body)) return memory_.take(*palette);
      return warn("a palette is cut short; left out");
    case PgsSegmentType::Object: {
      const auto piece = parseObject(segment.body);
      const std::string problem = piece ? memory_.take(*piece) : "an object is cut short; left out";
      if (!problem.empty()) warn(problem);
      return;
    }
    case PgsSegmentType::End:
      return present();
    case PgsSegmentType::Windows:
      return;  // where objects may lie; they say themselves where they do
  }
}

void PgsDisplayDecoder::begin(std::span<const std::uint8_t> body, MediaTime time) {
  present();
  auto composition = parseComposition(body);
  if (!composition) return warn("a composition is cut short; the picture is left out");
  if (composition->width > kMostPixels || composition->height > kMostPixels) {
    return warn("a display of more than 4096 pixels; the picture is left out");
  }
  if (composition->startsEpoch) memory_.clear();
  pending_ = {.composition = std::move(*composition), .time = time};
}

void PgsDisplayDecoder::present() {
  if (!pending_) return;
  const auto [composition, time] = *std::exchange(pending_, std::nullopt);
  show(time, composition.places.empty() ? SubtitleBitmap{} : paint(composition, time));
}

SubtitleBitmap PgsDisplayDecoder::paint(const PgsComposition& composition, MediaTime time) {
  SubtitleBitmap bitmap;
  bitmap.visible = 1;
  bitmap.width = composition.width;
  bitmap.height = composition.height;
  bitmap.start = time;
  bitmap.end = time + kWithoutEnd;
  auto pixels = std::make_shared<PixelBuffer>(bitmap.width, bitmap.height);
  const auto colours = memory_.colours(composition.palette, bitmap.height);
  for (const auto& place : composition.places) {
    const auto* object = memory_.object(place.object);
    if (object) {
      paintObject(*pixels, composition, *object, place, colours);
    } else {
      warn("object " + std::to_string(place.object) + " is missing; shown without it");
    }
  }
  bitmap.pixels = std::move(pixels);
  return bitmap;
}

// Acquisition points repeat what is shown.
void PgsDisplayDecoder::show(MediaTime time, SubtitleBitmap bitmap) {
  time = std::max(time, lastTime_);
  if (showSame(shown_, bitmap)) return;
  if (bitmap.visible != 0) bitmap.pageState = ++pageState_;
  shown_ = bitmap;
  lastTime_ = time;
  listener_.onDisplay(time, Subtitle(std::move(bitmap)));
}

void PgsDisplayDecoder::finish(MediaTime end) {
  present();
  if (shown_.visible != 0) show(std::max(end, lastTime_), SubtitleBitmap{});
}

void PgsDisplayDecoder::warn(const std::string& what) {
  log::write(logger_, log::Level::Warning, "PGS: %s", what.c_str());
}

}  // namespace korr::encoding::subtitling::disc::inline v2_1
