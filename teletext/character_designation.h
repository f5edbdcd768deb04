// SPDX-License-Identifier: MIT

// Which character sets a page or a magazine uses (ETSI EN 300 706, 9.4.2 and 9.5.1).
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "teletext/character_sets.h"
#include "teletext/packet.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {

/// What packet X/28/0 says for its page and M/29/0 for its magazine: seven bits each of table 32
/// and table 33.
struct CharacterDesignation {
  std::uint32_t primary = 0;
  std::optional<std::uint32_t> second;  ///< nothing where its triplet is damaged

  /// The set that ESC switches to; nothing where there is none.
  std::optional<CharacterSet> secondSet() const;

  friend bool operator==(const CharacterDesignation&, const CharacterDesignation&) = default;
};

/// Packet X/28/0 of a page of text (format 1), else nothing.
std::optional<CharacterDesignation> readPageDesignation(
    std::span<const std::uint8_t, Packet::kDataSize> data);

/// Packet M/29/0, else nothing.
std::optional<CharacterDesignation> readMagazineDesignation(
    std::span<const std::uint8_t, Packet::kDataSize> data);

/// The default sets of a page. `option` is that of its header, `group` what holds where no packet
/// designates. X/28/0 goes before M/29/0.
CharacterSet defaultSet(const std::optional<CharacterDesignation>& page,
                        const std::optional<CharacterDesignation>& magazine, std::uint32_t group,
                        std::uint32_t option);

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
