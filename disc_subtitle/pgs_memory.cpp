// SPDX-License-Identifier: MIT
#include "disc_subtitle/pgs_memory.h"

#include <algorithm>
#include <cmath>

namespace korr::encoding::subtitling::disc::inline v2_1 {

namespace {

// ITU-R BT.601 and BT.709: the share of red and blue in luminance.
struct Primaries {
  double red;
  double blue;
};
constexpr Primaries kStandardDefinition{0.299, 0.114};
constexpr Primaries kHighDefinition{0.2126, 0.0722};

std::uint8_t component(double value) {
  return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, 255.0)));
}

// Narrow range to full range.
std::array<std::uint8_t, 4> toRgba(const PgsColour& colour, const Primaries& primaries) {
  const double y = (colour.y - 16) * 255.0 / 219;
  const double cr = (colour.cr - 128) * 255.0 / 112 * (1 - primaries.red);
  const double cb = (colour.cb - 128) * 255.0 / 112 * (1 - primaries.blue);
  const double green = 1 - primaries.red - primaries.blue;
  return {component(y + cr), component(y - (primaries.red * cr + primaries.blue * cb) / green),
          component(y + cb), colour.alpha};
}

}  // namespace

void PgsMemory::clear() {
  objects_.clear();
  palettes_.clear();
  bytes_ = 0;
}

std::string PgsMemory::take(const PgsObjectPiece& piece) {
  if (piece.isFirst) {
    if (!objects_.contains(piece.id) && objects_.size() >= kMostObjects) {
      return "more than 256 objects; this one is left out";
    }
    auto& object = objects_[piece.id];
    bytes_ -= object.data.size();
    object = {.width = piece.width, .height = piece.height, .size = piece.size, .data = {}};
  }
  const auto found = objects_.find(piece.id);
  if (found == objects_.end() || found->second.isComplete) {
    return "a piece of an object whose beginning is missing; left out";
  }
  auto& object = found->second;
  const auto count = std::min<std::size_t>(piece.data.size(), object.size - object.data.size());
  if (bytes_ + count > kMostBytes) return "more than 16 MB of objects; this one is left out";
  object.data.insert(object.data.end(), piece.data.begin(),
                     piece.data.begin() + static_cast<std::ptrdiff_t>(count));
  bytes_ += count;
  object.isComplete = piece.isLast;
  if (piece.isLast && object.data.size() < object.size) {
    return "an object ends early; it is shown as far as it goes";
  }
  return {};
}

void PgsMemory::take(const PgsPalette& palette) {
  auto& colours = palettes_[palette.id];
  for (const auto& colour : palette.colours) colours[colour.entry] = colour;
}

const PgsObject* PgsMemory::object(std::uint16_t id) const {
  const auto found = objects_.find(id);
  return found != objects_.end() && found->second.isComplete ? &found->second : nullptr;
}

PgsColours PgsMemory::colours(std::uint8_t id, std::uint32_t height) const {
  constexpr std::uint32_t kStandardLines = 576;
  PgsColours out{};
  const auto palette = palettes_.find(id);
  if (palette == palettes_.end()) return out;
  const auto& primaries = height > kStandardLines ? kHighDefinition : kStandardDefinition;
  for (const auto& [entry, colour] : palette->second) out[entry] = toRgba(colour, primaries);
  return out;
}

}  // namespace korr::encoding::subtitling::disc::inline v2_1
