// SPDX-License-Identifier: MIT

// Pixel codes of one depth to those of another.
#pragma once

#include <array>
#include <cstdint>

#include "dvb_subtitle/region.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

/// Takes codes to a greater depth; a new one holds the defaults (EN 300 743, 10.4 to 10.6).
struct MapTables {
  std::array<std::uint8_t, 4> twoToFourBit{0x0, 0x7, 0x8, 0xF};
  std::array<std::uint8_t, 4> twoToEightBit{0x00, 0x77, 0x88, 0xFF};
  std::array<std::uint8_t, 16> fourToEightBit{0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77,
                                              0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};
};

/// `code`, from a string of `stringDepth`, as a code of a region of `regionDepth`.
std::uint32_t mapCode(const MapTables& maps, PixelDepth regionDepth, PixelDepth stringDepth,
                      std::uint32_t code);

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
