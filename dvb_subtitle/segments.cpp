// SPDX-License-Identifier: MIT
#include "dvb_subtitle/segments.h"

#include <algorithm>

#include "dvb_subtitle/errors.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {
namespace {

using util::BitReader;

constexpr std::uint32_t kTransparent = 255;

// Y = 0 says that nothing is to be seen (EN 300 743, 7.2.4).
Colour entryColour(std::uint32_t y, std::uint32_t cr, std::uint32_t cb, std::uint32_t transparency,
                   const DvbRules& rules) {
  return y == 0 ? colourOf(16, 16, 16, kTransparent, rules)
                : colourOf(y, cr, cb, transparency, rules);
}

Colour readFullRangeColour(BitReader& reader, const DvbRules& rules) {
  const std::uint32_t y = reader.read(8);
  const std::uint32_t cr = reader.read(8);
  const std::uint32_t cb = reader.read(8);
  const std::uint32_t transparency = reader.read(8);
  return entryColour(y, cr, cb, transparency, rules);
}

Colour readReducedRangeColour(BitReader& reader, const DvbRules& rules) {
  const bool widens = rules.widensReducedRange;
  const std::uint32_t y = reader.read(6) << (widens ? 2 : 0);
  const std::uint32_t cr = reader.read(4) << (widens ? 4 : 0);
  const std::uint32_t cb = reader.read(4) << (widens ? 4 : 0);
  const std::uint32_t transparency = reader.read(2) << 6;
  return entryColour(y, cr, cb, transparency, rules);
}

ClutEntry readClutEntry(BitReader& reader, const DvbRules& rules) {
  ClutEntry entry;
  entry.id = static_cast<std::uint8_t>(reader.read(8));
  entry.isTwoBit = reader.readFlag();
  entry.isFourBit = reader.readFlag();
  entry.isEightBit = reader.readFlag();
  reader.skip(4);  // reserved
  const bool fullRange = reader.readFlag();
  entry.colour =
      fullRange ? readFullRangeColour(reader, rules) : readReducedRangeColour(reader, rules);
  return entry;
}

// A field's data block. Announced bytes that the segment does not have are 0; as no decoder gets
// past a few of them (they end any code string and are no data_type), a few stand for all.
std::vector<std::uint8_t> readDataBlock(BitReader& reader, std::size_t length) {
  constexpr std::size_t kMostZeros = 32;
  const std::size_t present = std::min(length, reader.bitsLeft() / 8);
  const auto bytes = reader.readBytes(present);
  std::vector<std::uint8_t> block(bytes.begin(), bytes.end());
  block.resize(present + std::min(length - present, kMostZeros));
  return block;
}

void readPixels(BitReader& reader, DVBObject& object) {
  const std::size_t topFieldLength = reader.read(16);
  const std::size_t bottomFieldLength = reader.read(16);
  object.topField = readDataBlock(reader, topFieldLength);
  object.bottomField = readDataBlock(reader, bottomFieldLength);
}

void readCharacters(BitReader& reader, DVBObject& object) {
  object.characterCodes.resize(reader.read(8));
  for (auto& code : object.characterCodes) code = static_cast<std::uint16_t>(reader.read(16));
}

}  // namespace

SegmentHeader readSegmentHeader(BitReader& reader) {
  SegmentHeader header;
  reader.skip(8);  // sync_byte
  header.type = static_cast<SegmentType>(reader.read(8));
  header.pageId = static_cast<std::uint16_t>(reader.read(16));
  reader.skip(16);  // segment_length
  return header;
}

PageComposition readPageComposition(BitReader& reader) {
  constexpr std::uint32_t kAcquisitionPoint = 1;
  constexpr std::uint32_t kModeChange = 2;
  constexpr std::size_t kRegionBits = 48;

  PageComposition page;
  page.timeOut = reader.read(8);
  reader.skip(4);  // page_version_number
  const std::uint32_t pageState = reader.read(2);
  page.beginsEpoch = pageState == kModeChange;
  page.startsAfresh = page.beginsEpoch || pageState == kAcquisitionPoint;
  reader.skip(2);  // reserved
  while (reader.bitsLeft() >= kRegionBits) {
    const auto regionId = static_cast<int>(reader.read(8));
    reader.skip(8);  // reserved
    Position& position = page.regions[regionId];
    position.horizontal = reader.read(16);
    position.vertical = reader.read(16);
  }
  page.bitsLeft = reader.bitsLeft();
  return page;
}

RegionComposition readRegionComposition(BitReader& reader) {
  RegionComposition composition;
  DVBRegion& region = composition.region;
  composition.id = static_cast<int>(reader.read(8));
  reader.skip(4);  // region_version_number
  region.fillFlag = reader.readFlag();
  reader.skip(3);  // reserved
  region.width = reader.read(16);
  region.height = reader.read(16);
  reader.skip(3);  // region_level_of_compatibility
  const std::uint32_t depth = reader.read(3);
  if (depth < 1 || depth > 3)
    throw SegmentError("Unsupported region_depth = %d", static_cast<int>(depth));
  region.depth = static_cast<PixelDepth>(depth);
  reader.skip(2);  // reserved
  region.clutId = reader.read(8);
  region.pixelCode8Bit = reader.read(8);
  region.pixelCode4Bit = reader.read(4);
  region.pixelCode2Bit = reader.read(2);
  reader.skip(2);  // reserved
  return composition;
}

std::optional<ObjectPlacement> readRegionObject(BitReader& reader, const DvbRules& rules) {
  constexpr std::uint32_t kCharacter = 1;
  constexpr std::uint32_t kCharacterString = 2;

  ObjectPlacement object;
  object.objectId = static_cast<int>(reader.read(16));
  const std::uint32_t type = reader.read(2);
  const std::uint32_t providerFlag = reader.read(2);
  if (providerFlag != 0 && !rules.passesOverProvidedObjects)
    throw SegmentError("Unsupported object_provider_flag %d", static_cast<int>(providerFlag));
  object.position.horizontal = reader.read(12);
  reader.skip(4);  // reserved
  object.position.vertical = reader.read(12);
  if (rules.readsCharacterColours && (type == kCharacter || type == kCharacterString))
    reader.skip(16);  // foreground_pixel_code, background_pixel_code
  if (providerFlag != 0) return {};
  return object;
}

ClutDefinition readClutDefinition(BitReader& reader, const DvbRules& rules) {
  ClutDefinition definition;
  definition.id = static_cast<int>(reader.read(8));
  reader.skip(8);  // CLUT_version_number, reserved
  while (!reader.exhausted()) definition.entries.push_back(readClutEntry(reader, rules));
  return definition;
}

void applyClutDefinition(const ClutDefinition& definition, const DvbRules& rules,
                         DVBClutSet& cluts) {
  if (!rules.keepsUnnamedEntries) cluts = kDefaultClutSet;
  for (const ClutEntry& entry : definition.entries) {
    bool isFree = true;  // to go into a table
    const auto put = [&](bool isFlagged, auto& table) {
      if (!isFlagged || !isFree || entry.id >= table.size()) return;
      table[entry.id] = entry.colour;
      isFree = rules.fillsAllFlaggedTables;
    };
    put(entry.isTwoBit, cluts.twoBit);
    put(entry.isFourBit, cluts.fourBit);
    put(entry.isEightBit, cluts.eightBit);
  }
}

DVBObject readObjectData(BitReader& reader) {
  constexpr std::uint32_t kPixels = 0;
  constexpr std::uint32_t kCharacters = 1;

  DVBObject object;
  object.id = reader.read(16);
  reader.skip(4);  // object_version_number
  const std::uint32_t codingMethod = reader.read(2);
  object.nonModifyingColour = reader.readFlag();
  reader.skip(1);  // reserved
  switch (codingMethod) {
    case kPixels:
      readPixels(reader, object);
      return object;
    case kCharacters:
      readCharacters(reader, object);
      return object;
    default:
      throw SegmentError("Unsupported object_coding_method %d", static_cast<int>(codingMethod));
  }
}

DisplayDefinition readDisplayDefinition(BitReader& reader) {
  const auto readInt = [&reader] { return static_cast<std::int32_t>(reader.read(16)); };

  DisplayDefinition display;
  auto& window = display.window;
  reader.skip(4);  // dds_version_number
  const bool windowFlag = reader.readFlag();
  reader.skip(3);  // reserved
  display.width = reader.read(16) + 1;
  display.height = reader.read(16) + 1;
  if (windowFlag) {
    window.horizontalMinimum = readInt();
    window.horizontalMaximum = readInt();
    window.verticalMinimum = readInt();
    window.verticalMaximum = readInt();
  } else {
    window.horizontalMaximum = static_cast<std::int32_t>(display.width);
    window.verticalMaximum = static_cast<std::int32_t>(display.height);
  }
  return display;
}

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
