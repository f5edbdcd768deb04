// SPDX-License-Identifier: MIT
#include "dvb_subtitle/pixel_data.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {
namespace {

// The rule for a 4-bit code in a 2-bit region (EN 300 743, 10.3): bit 0, or bit 1 in its place.
std::uint32_t fourToTwoBit(std::uint32_t code) {
  return code >> 2 | (code >> 1 & 1) | (code & 1);
}

}  // namespace

std::uint32_t mapCode(const MapTables& maps, PixelDepth regionDepth, PixelDepth stringDepth,
                      std::uint32_t code) {
  switch (regionDepth) {
    case PixelDepth::TwoBit:
      if (stringDepth == PixelDepth::EightBit) code >>= 4;
      return stringDepth == PixelDepth::TwoBit ? code : fourToTwoBit(code);
    case PixelDepth::FourBit:
      if (stringDepth == PixelDepth::TwoBit) return maps.twoToFourBit[code];
      return stringDepth == PixelDepth::EightBit ? code >> 4 : code;
    case PixelDepth::EightBit:
      if (stringDepth == PixelDepth::TwoBit) return maps.twoToEightBit[code];
      return stringDepth == PixelDepth::FourBit ? maps.fourToEightBit[code] : code;
  }
  return 0;
}

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
