// SPDX-License-Identifier: MIT

// The bytes of a row to runs of boxed text (ETSI EN 300 706, 12.2).
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "model/subtitle.h"
#include "teletext/character_sets.h"
#include "teletext/enhancement.h"
#include "teletext/teletext_rules.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {

/// What a row is decoded with.
struct RowContext {
  std::uint32_t row = 0;          ///< 0 to 24
  std::uint32_t firstColumn = 0;  ///< of the first byte
  const CharacterSet& characters;
  const Enhancements& enhancements;
  const CharacterSet* second = nullptr;  ///< what ESC switches to; null: nothing
  bool boxesOnly = true;                 ///< else the whole row is shown
};

/// The runs of a row of raw bytes as `rules` have them: those of its boxes, or of the whole row.
template <TeletextRules kRules>
std::vector<TeletextText::Run> decodeRow(std::span<const std::uint8_t> bytes,
                                         const RowContext& context);

/// The same from character codes, 0x00 to 0x7F or `kUnknownCharacter`.
template <TeletextRules kRules>
std::vector<TeletextText::Run> decodeCodes(std::span<const std::uint8_t> codes,
                                           const RowContext& context);

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
