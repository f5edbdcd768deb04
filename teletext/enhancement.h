// SPDX-License-Identifier: MIT

// Characters that packet 26 puts in the place of others (ETSI EN 300 706, 12.3).
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>

#include "model/glyph_text.h"
#include "teletext/character_sets.h"
#include "teletext/packet.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {

/// The enhancements of the page in transmission. They arrive before the rows that they change and
/// hold until the page's next header.
class Enhancements {
 public:
  /// Forgets everything: a header has come.
  void clear();

  /// Takes a packet 26: a designation code and 13 triplets, of which damaged ones are skipped.
  void take(std::span<const std::uint8_t, Packet::kDataSize> data, const CharacterSet& characters);

  /// A packet is missing: columns mean nothing until the next row address.
  void loseRow() { activeRow_.reset(); }

  /// What stands at a place instead of its own character, if anything.
  std::optional<GlyphText> at(std::uint32_t row, std::uint32_t column) const;

 private:
  void takeTriplet(std::uint32_t triplet, const CharacterSet& page);
  void takeRowAddress(std::uint32_t address, std::uint32_t mode);
  void missTriplet(std::uint32_t damaged);
  void moveTo(std::uint32_t row);

  std::map<std::uint32_t, GlyphText> glyphs_;   // by row * 64 + column
  std::optional<std::uint32_t> activeRow_ = 0;  // none: its address was lost
  std::uint32_t lastColumn_ = 0;                // of the active row's triplets so far
  bool hasMissedTriplet_ = false;               // in the active row
  std::optional<CharacterSet> rowCharacters_;   // instead of the page's
  bool terminated_ = false;
};

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
