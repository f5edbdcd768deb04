// SPDX-License-Identifier: MIT
#include "closed_caption/caption_codes.h"

#include <array>

namespace korr::encoding::subtitling::closed_caption::inline v2 {

CaptionColour colourOf(std::uint8_t code) {
  return static_cast<CaptionColour>((code & 0x0F) / 2 + 1);
}

PreambleAddress preambleAddress(BytePair pair) {
  // By the first byte, 0x10 to 0x17; a second one of 0x60 and above names the row below.
  constexpr std::array<std::int32_t, 8> kRows = {11, 1, 3, 12, 14, 5, 7, 9};
  const std::uint8_t attribute = pair.b2 & 0x1F;
  PreambleAddress address{.row = kRows[pair.b1 & 0x07] + (pair.b2 >= 0x60 ? 1 : 0),
                          .underline = isOdd(attribute)};
  if (attribute < 0x0E) {
    address.foreground = colourOf(attribute);
  } else if (attribute < 0x10) {
    address.italic = true;
  } else {
    address.column = 4u * ((attribute - 0x10u) / 2);
  }
  return address;
}

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
