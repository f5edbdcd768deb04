// SPDX-License-Identifier: MIT

// Segments to plain values, field by field. A field that the segment is too short for is 0.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "dvb_subtitle/clut.h"
#include "dvb_subtitle/dvb_rules.h"
#include "dvb_subtitle/region.h"
#include "util/bit_reader.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

/// EN 300 743, table 7.
enum class SegmentType : std::uint8_t {
  PageComposition = 0x10,
  RegionComposition = 0x11,
  ClutDefinition = 0x12,
  ObjectData = 0x13,
  DisplayDefinition = 0x14,
  EndOfDisplaySet = 0x80,
};

/// EN 300 743, 7.2.1.
struct SegmentHeader {
  SegmentType type{};
  std::uint16_t pageId = 0;
};
SegmentHeader readSegmentHeader(util::BitReader& reader);

/// EN 300 743, 7.2.2.
struct PageComposition {
  std::uint32_t timeOut = 0;  ///< seconds
  bool startsAfresh = false;  ///< acquisition point or mode change: nothing before it is needed
  bool beginsEpoch = false;   ///< mode change
  Placements regions;
  std::size_t bitsLeft = 0;  ///< after the last whole region
};
PageComposition readPageComposition(util::BitReader& reader);

/// EN 300 743, 7.2.3, up to the list of objects.
struct RegionComposition {
  int id = 0;
  DVBRegion region;  ///< without objects
};
/// Throws SegmentError for an unknown region_depth.
RegionComposition readRegionComposition(util::BitReader& reader);

/// The next object in the rest of a region composition segment, where the reader stands before its
/// end. One that is not in the stream throws SegmentError or, by `rules`, is passed over.
std::optional<ObjectPlacement> readRegionObject(util::BitReader& reader, const DvbRules& rules);

/// EN 300 743, 7.2.4.
struct ClutEntry {
  std::uint8_t id = 0;
  bool isTwoBit = false;  ///< the tables that it is flagged for
  bool isFourBit = false;
  bool isEightBit = false;
  Colour colour;
};
struct ClutDefinition {
  int id = 0;
  std::vector<ClutEntry> entries;
};
ClutDefinition readClutDefinition(util::BitReader& reader, const DvbRules& rules);

/// Puts the entries of a definition into `cluts`, which by `rules` become the default ones first.
void applyClutDefinition(const ClutDefinition& definition, const DvbRules& rules,
                         DVBClutSet& cluts);

/// EN 300 743, 7.2.5. Throws SegmentError for an unknown object_coding_method.
DVBObject readObjectData(util::BitReader& reader);

/// EN 300 743, 7.2.7.
struct DisplayDefinition {
  std::uint32_t width = 720;
  std::uint32_t height = 576;
  /// A signalled maximum is inclusive, a default one is the size, deliberately.
  struct Window {
    std::int32_t horizontalMinimum = 0;
    std::int32_t verticalMinimum = 0;
    std::int32_t horizontalMaximum = 720;
    std::int32_t verticalMaximum = 576;
  } window;
};
DisplayDefinition readDisplayDefinition(util::BitReader& reader);

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
