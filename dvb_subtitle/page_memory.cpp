// SPDX-License-Identifier: MIT
#include "dvb_subtitle/page_memory.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <functional>
#include <numeric>
#include <span>
#include <utility>

#include "dvb_subtitle/errors.h"
#include "dvb_subtitle/limits.h"
#include "dvb_subtitle/object_painter.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {
namespace {

using util::BitReader;

std::string missingRegion(int id) {
  return "region " + std::to_string(id);
}

std::string missingObject(int id, int regionId) {
  return "object " + std::to_string(id) + " of region " + std::to_string(regionId);
}

// Writes the pixels of a row; whether any is other than transparent black. Most stand among their
// like, so that eight are looked at together.
bool colourRow(std::span<const std::uint8_t> codes, const Colour* colours, std::uint32_t* out) {
  constexpr std::size_t kStep = 8;
  constexpr std::uint64_t kEach = 0x0101010101010101;
  std::uint32_t anyBits = 0;
  const auto pixelOf = [&](std::uint8_t code) {
    const auto pixel = std::bit_cast<std::uint32_t>(colours[code]);
    anyBits |= pixel;
    return pixel;
  };
  std::size_t x = 0;
  for (; x + kStep <= codes.size(); x += kStep) {
    std::uint64_t step = 0;
    std::memcpy(&step, &codes[x], sizeof step);
    if (step == codes[x] * kEach) {
      std::fill_n(out + x, kStep, pixelOf(codes[x]));
    } else {
      for (std::size_t i = x; i < x + kStep; ++i) out[i] = pixelOf(codes[i]);
    }
  }
  for (; x < codes.size(); ++x) out[x] = pixelOf(codes[x]);
  return anyBits != 0;
}

}  // namespace

void PageMemory::clear(bool beginsEpoch) {
  regions_.clear();
  regionPixels_ = 0;
  placements_ = 0;
  objects_.clear();
  objectBytes_ = 0;
  if (beginsEpoch) cluts_.clear();
}

void PageMemory::takeRegion(BitReader& reader) {
  const RegionComposition composition = readRegionComposition(reader);
  if (reader.failed()) throw SegmentError("Region composition segment cut off");
  Region& region = regions_[composition.id];
  makeRoom(composition.id, composition.region, region);
  region.description = composition.region;
  readPlacements(composition.id, reader, region);
}

// Gives the region memory of its size. What is new starts out in the region's background.
void PageMemory::makeRoom(int id, const DVBRegion& description, Region& region) {
  const bool isKnown = region.memory.width() == description.width &&
                       region.memory.height() == description.height &&
                       region.description.depth == description.depth;
  if (isKnown && !description.fillFlag) return;
  placements_ -= region.placements.size();
  region.placements.clear();
  if (!isKnown) {
    regionPixels_ -= region.memory.pixels();
    region.memory = {};
    const std::uint64_t pixels = std::uint64_t{description.width} * description.height;
    if (regionPixels_ + pixels > kMostDisplayPixels) {
      throw SegmentError("Region %d of %u by %u pixels refused: all regions together exceed %u", id,
                         description.width, description.height,
                         static_cast<unsigned>(kMostDisplayPixels));
    }
    budget_.spendOnPixels(pixels);
    region.memory = {description.width, description.height};
    regionPixels_ += pixels;
  }
  budget_.spendOnPixels(region.memory.pixels());
  region.memory.fill(description.fillCode());
}

// The list takes the place of what is painted already; what still waits for its object goes on
// waiting.
void PageMemory::readPlacements(int id, BitReader& reader, Region& region) {
  placements_ -= region.placements.size();
  std::erase_if(region.placements, [](const auto& placement) { return placement.paintedRevision; });
  placements_ += region.placements.size();
  while (!reader.exhausted()) {
    const auto object = readRegionObject(reader, kReceiver);
    if (reader.failed()) break;  // cut off
    if (!object) continue;
    if (placements_ == kMostObjectsInRegion) {
      throw SegmentError("Objects of region %d lost: more than %d on the page", id,
                         static_cast<int>(kMostObjectsInRegion));
    }
    region.placements.push_back({.object = *object});
    ++placements_;
  }
}

void PageMemory::takeClut(BitReader& reader) {
  ClutDefinition definition = readClutDefinition(reader, kReceiver);
  if (reader.failed() && !definition.entries.empty()) definition.entries.pop_back();  // cut off
  auto& cluts = cluts_.try_emplace(definition.id, kDefaultClutSet).first->second;
  applyClutDefinition(definition, kReceiver, cluts);
}

void PageMemory::takeObject(BitReader& reader) {
  DVBObject object = readObjectData(reader);
  if (reader.failed()) throw SegmentError("Object data segment cut off");
  const auto id = static_cast<int>(object.id);
  Object& known = objects_[id];
  objectBytes_ -= known.object.bytes();
  known.object = {};
  if (objectBytes_ + object.bytes() > kMostObjectBytes) {
    objects_.erase(id);
    throw SegmentError("Object %d refused: all objects together exceed %d bytes", id,
                       static_cast<int>(kMostObjectBytes));
  }
  objectBytes_ += object.bytes();
  known = {.object = std::move(object), .revision = ++revisions_};
}

void PageMemory::takeDisplay(BitReader& reader) {
  const DisplayDefinition display = readDisplayDefinition(reader);
  if (reader.failed()) throw SegmentError("Display definition segment cut off");
  display_ = display;
}

std::optional<std::string> PageMemory::missingItem(const Placements& regions) {
  budget_.spendOnObjects(placements_);
  for (const auto& [regionId, address] : regions) {
    const auto region = regions_.find(regionId);
    if (region == regions_.end()) return missingRegion(regionId);
    for (const Placement& placement : region->second.placements) {
      if (!objects_.contains(placement.object.objectId))
        return missingObject(placement.object.objectId, regionId);
    }
  }
  return {};
}

SubtitleBitmap PageMemory::compose(const Placements& regions) {
  budget_.spendOnObjects(placements_);
  for (auto& [id, region] : regions_) paintObjects(region);

  if (std::uint64_t{display_.width} * display_.height > kMostDisplayPixels) {
    throw SegmentError("Display of %u by %u pixels refused: more than %u pixels", display_.width,
                       display_.height, static_cast<unsigned>(kMostDisplayPixels));
  }
  auto pixels = pixelBuffers_.take(display_.width, display_.height);
  for (const auto& [id, address] : regions) {
    const auto region = regions_.find(id);
    if (region == regions_.end()) continue;
    budget_.spendOnPixels(region->second.memory.pixels());
    show(region->second, address, *pixels);
  }
  const std::uint32_t divisor = std::gcd(display_.width, display_.height);
  return {.visible = 1,
          .width = display_.width,
          .height = display_.height,
          .aspectNumerator = display_.width / divisor,
          .aspectDenominator = display_.height / divisor,
          .pixels = std::move(pixels)};
}

// Those that are not painted as they are now.
void PageMemory::paintObjects(Region& region) {
  for (Placement& placement : region.placements) {
    const auto known = objects_.find(placement.object.objectId);
    if (known == objects_.end() || known->second.revision == placement.paintedRevision) continue;
    placement.paintedRevision = known->second.revision;
    paintObject(known->second.object, placement.object.position, region);
  }
}

// Of an object that is damaged, what comes before stays.
void PageMemory::paintObject(const DVBObject& object, Position position, Region& region) {
  try {
    ObjectPainter(region.memory, region.description.depth, std::identity{}, kReceiver, budget_)
        .paint(object, position);
  } catch (const SegmentError& error) {
    if (budget_.isUsedUp()) throw;
    log::write(logger_, log::Level::Warning, "Object %d not painted to its end: %s",
               static_cast<int>(object.id), error.what());
  }
}

// Region addresses are relative to the display window (EN 300 743, 7.2.1).
void PageMemory::show(const Region& region, Position address, PixelBuffer& pixels) const {
  const std::uint64_t left = std::uint64_t{address.horizontal} +
                             static_cast<std::uint32_t>(display_.window.horizontalMinimum);
  const std::uint64_t top =
      std::uint64_t{address.vertical} + static_cast<std::uint32_t>(display_.window.verticalMinimum);
  if (left >= display_.width || top >= display_.height) return;
  const auto width = std::min<std::uint64_t>(region.memory.width(), display_.width - left);
  const auto height = std::min<std::uint64_t>(region.memory.height(), display_.height - top);
  const Colour* const colours =
      clutsOf(region.description.clutId).ofDepth(region.description.depth);
  auto* const out = reinterpret_cast<std::uint32_t*>(pixels.data());
  for (std::uint32_t y = 0; y < height; ++y) {
    const auto line = static_cast<std::uint32_t>(top + y);
    const std::uint8_t* const codes = region.memory.codesOfRow(y);
    const bool isVisible = colourRow({codes, static_cast<std::size_t>(width)}, colours,
                                     out + std::size_t{line} * display_.width + left);
    if (isVisible) pixels.addPaintedRows({line, line + 1});
  }
}

const DVBClutSet& PageMemory::clutsOf(std::uint32_t clutId) const {
  const auto cluts = cluts_.find(static_cast<int>(clutId));
  return cluts == cluts_.end() ? kDefaultClutSet : cluts->second;
}

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
