// SPDX-License-Identifier: MIT

// The letters of teletext.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "model/glyph_text.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {

/// The G0 and G2 sets and the national subset of a page (EN 300 706, 15.2, table 32).
class CharacterSet {
 public:
  /// The 96 characters 0x20 to 0x7F; an empty one is not there.
  using Set = std::array<GlyphText, 96>;
  /// The 13 positions that Latin sets leave to a nation, in the order of their codes: 0x23, 0x24,
  /// 0x40, 0x5B to 0x60, 0x7B to 0x7E.
  using Subset = std::array<GlyphText, 13>;

  /// `national` is null where the national positions are not there.
  constexpr CharacterSet(const Set& g0, const Set& g2, const Subset* national)
      : g0_(&g0), g2_(&g2), national_(national) {}

  /// `group`: the four leading bits of table 32. `option`: C12 to C14 of the page header, the first
  /// in bit 2. Where the table is empty the national positions are not there.
  static CharacterSet of(std::uint32_t group, std::uint32_t option);

  /// What seven bits of a packet designate (table 32): the group and, in the last three, the
  /// option. Nothing where the table is empty.
  static std::optional<CharacterSet> designated(std::uint32_t code);

  /// The G0 character of `code`, 0x20 to 0x7F; nothing when the set has none there.
  std::optional<GlyphText> g0(std::uint8_t code) const;

  /// The same as if there were no national option: how packet 26 names letters (12.3.4).
  std::optional<GlyphText> basicG0(std::uint8_t code) const;

  /// The same for G2.
  std::optional<GlyphText> g2(std::uint8_t code) const;

 private:
  const Set* g0_;
  const Set* g2_;
  const Subset* national_;
};

/// `letter` with the diacritic of packet 26 mode 0x10 + `mark`, 0 to 15 (EN 300 706, 12.3.4),
/// precomposed where Unicode has it so.
GlyphText withDiacritic(GlyphText letter, std::uint32_t mark);

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
