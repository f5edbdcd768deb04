// SPDX-License-Identifier: MIT

// Regions and objects.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

/// A place in pixels, from the top left corner.
struct Position {
  std::uint32_t horizontal = 0;
  std::uint32_t vertical = 0;
};

/// Places by region_id or object_id.
using Placements = std::map<int, Position>;

/// Bits per pixel, of a region by its region_depth and of a pixel code string.
enum class PixelDepth : std::uint32_t {
  TwoBit = 1,
  FourBit = 2,
  EightBit = 3,
};

/// A rectangle that shows objects (EN 300 743, 7.2.3).
struct DVBRegion {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t clutId = 0;
  PixelDepth depth = PixelDepth::TwoBit;
  bool fillFlag = false;
  std::uint32_t pixelCode2Bit = 0;  ///< what `fillFlag` fills with, for each depth
  std::uint32_t pixelCode4Bit = 0;
  std::uint32_t pixelCode8Bit = 0;
  Placements objects;  ///< relative to the region; for decoders that keep objects, not pixels

  /// What it is filled with, of its own depth.
  std::uint32_t fillCode() const {
    return depth == PixelDepth::TwoBit    ? pixelCode2Bit
           : depth == PixelDepth::FourBit ? pixelCode4Bit
                                          : pixelCode8Bit;
  }
};

/// Where a region shows an object (EN 300 743, 7.2.3).
struct ObjectPlacement {
  int objectId = 0;
  Position position;  ///< relative to the region
};

/// A picture in code strings, or characters (EN 300 743, 7.2.5).
struct DVBObject {
  std::uint32_t id = 0;
  std::vector<std::uint8_t> topField;
  std::vector<std::uint8_t> bottomField;  ///< empty: as the top field
  bool nonModifyingColour = false;        ///< pixels of code 1 stay as they are
  std::vector<std::uint16_t> characterCodes;

  std::size_t bytes() const { return topField.size() + bottomField.size(); }
};

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
