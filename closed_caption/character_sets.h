// SPDX-License-Identifier: MIT

// The characters of line 21.
#pragma once

#include <cstdint>

#include "model/glyph_text.h"

namespace korr::encoding::subtitling::closed_caption::inline v2 {

/// 0x01 to 0x7F: ASCII but for ten codes (CEA-608, table 50).
const GlyphText& basicCharacter(std::uint8_t code);

/// 0x30 to 0x3F after 0x11 (CEA-608, table 49).
const GlyphText& specialCharacter(std::uint8_t code);

/// 0x20 to 0x3F after 0x12: Spanish, miscellaneous and French (CEA-608, tables 5 to 7).
const GlyphText& extendedSpanishFrench(std::uint8_t code);

/// 0x20 to 0x3F after 0x13: Portuguese, German and Danish (CEA-608, tables 8 to 10).
const GlyphText& extendedPortugueseGermanDanish(std::uint8_t code);

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
