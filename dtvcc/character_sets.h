// SPDX-License-Identifier: MIT

// The characters of digital captions.
#pragma once

#include <cstdint>

#include "model/glyph_text.h"

namespace korr::encoding::subtitling::dtvcc {

/// How two-byte characters are meant; the stream does not say.
enum class Charset {
  Automatic,  ///< EUC-KR while the pairs that come are Korean in it, else UTF-16
  Utf16,
  EucKr,
};

/// The character that a cell holds: a code of G0 or G1 as it stands, one of G2 or G3 with
/// `kExtendedSet`, two bytes of P16 with `kTwoBytes`; 0 for an empty cell.
using CharacterCode = std::uint32_t;
inline constexpr CharacterCode kExtendedSet = 0x1000;
inline constexpr CharacterCode kTwoBytes = 0x10000;

/// G2: a blank that shows neither the pen's background nor anything else (CEA-708-E, 7.1.8).
inline constexpr CharacterCode kTransparentSpace = kExtendedSet | 0x20;
inline constexpr CharacterCode kNonBreakingTransparentSpace = kExtendedSet | 0x21;

/// The character of a code other than 0; an underscore for those that the standard leaves open
/// (CEA-708-E, 7.1.2). Nothing for one half of a UTF-16 surrogate pair.
GlyphText characterOf(CharacterCode code, Charset charset);

/// The character that two halves of a surrogate pair make; nothing when they are none.
GlyphText surrogatePair(CharacterCode high, CharacterCode low);

/// Whether two bytes are a character of EUC-KR.
bool isEucKr(std::uint8_t first, std::uint8_t second);

}  // namespace korr::encoding::subtitling::dtvcc
