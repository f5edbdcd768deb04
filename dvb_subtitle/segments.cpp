#include "dvb_subtitle/segments.h"

#include <algorithm>

#include "dvb_subtitle/errors.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {
namespace {

using util::BitReader;

Colour readFullRangeColour(BitReader& reader) {
  const std::uint32_t y = reader.read(8);
  const std::uint32_t cr = reader.read(8);
  const std::uint32_t cb = reader.read(8);
  const std::uint32_t transparency = reader.read(8);
  return y == 0 ? colourOf(16, 16, 16, 255) : colourOf(y, cr, cb, transparency);
}

// Y, Cr and Cb are not scaled up to the full range, deliberately.
Colour readReducedRangeColour(BitReader& reader) {
  const std::uint32_t y = reader.read(6);
  const std::uint32_t cr = reader.read(4);
  const std::uint32_t cb = reader.read(4);
  const std::uint32_t transparency = reader.read(2) << 6;
  return y == 0 ? colourOf(16, 16, 16, 255) : colourOf(y, cr, cb, transparency);
}

// An entry goes into the first table that it is flagged for and that has room for its id.
void readClutEntry(BitReader& reader, DVBClutSet& cluts) {
  const std::uint32_t entryId = reader.read(8);
  const bool isTwoBit = reader.readFlag();
  const bool isFourBit = reader.readFlag();
  const bool isEightBit = reader.readFlag();
  reader.skip(4);  // reserved
  const bool fullRange = reader.readFlag();
  const Colour colour = fullRange ? readFullRangeColour(reader) : readReducedRangeColour(reader);

  if (isTwoBit && entryId < cluts.twoBit.size()) {
    cluts.twoBit[entryId] = colour;
  } else if (isFourBit && entryId < cluts.fourBit.size()) {
    cluts.fourBit[entryId] = colour;
  } else if (isEightBit) {
    cluts.eightBit[entryId] = colour;
  }
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
  page.startsAfresh = pageState == kAcquisitionPoint || pageState == kModeChange;
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

// No foreground and background codes are read, whatever the object_type, deliberately.
void readRegionObjects(BitReader& reader, Placements& objects) {
  while (!reader.exhausted()) {
    const auto objectId = static_cast<int>(reader.read(16));
    reader.skip(2);  // object_type
    const std::uint32_t providerFlag = reader.read(2);
    if (providerFlag != 0)
      throw SegmentError("Unsupported object_provider_flag %d", static_cast<int>(providerFlag));
    Position position;
    position.horizontal = reader.read(12);
    reader.skip(4);  // reserved
    position.vertical = reader.read(12);
    objects[objectId] = position;
  }
}

ClutDefinition readClutDefinition(BitReader& reader) {
  ClutDefinition definition;
  definition.id = static_cast<int>(reader.read(8));
  reader.skip(8);  // CLUT_version_number, reserved
  while (!reader.exhausted()) readClutEntry(reader, definition.cluts);
  return definition;
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
