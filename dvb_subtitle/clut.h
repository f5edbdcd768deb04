// SPDX-License-Identifier: MIT

// Colour look-up tables.
#pragma once

#include <array>
#include <cstdint>

#include "dvb_subtitle/dvb_rules.h"
#include "dvb_subtitle/region.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

/// A colour as pixels hold it; alpha 255 is opaque.
struct Colour {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  std::uint8_t alpha = 0;

  friend constexpr bool operator==(const Colour&, const Colour&) = default;
};
static_assert(sizeof(Colour) == 4, "copied into pixels as it stands");

/// A CLUT family: a table for each pixel depth.
struct DVBClutSet {
  std::array<Colour, 4> twoBit;
  std::array<Colour, 16> fourBit;
  std::array<Colour, 256> eightBit;

  /// The table of a depth: as many colours as it has codes.
  const Colour* ofDepth(PixelDepth depth) const {
    return depth == PixelDepth::TwoBit    ? twoBit.data()
           : depth == PixelDepth::FourBit ? fourBit.data()
                                          : eightBit.data();
  }
};

/// What every CLUT starts from, and what stands in for one that was never defined (EN 300 743,
/// clause 10).
extern const DVBClutSet kDefaultClutSet;

/// The colour of a CLUT entry in the full range. `transparency` 0 is opaque. By `rules` it is
/// exact, or computed in single precision, as the filter does.
Colour colourOf(std::uint32_t y, std::uint32_t cr, std::uint32_t cb, std::uint32_t transparency,
                const DvbRules& rules);

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
