// The bytes of a row to runs of boxed text (ETSI EN 300 706, 12.2).
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "model/subtitle.h"
#include "teletext/character_sets.h"
#include "teletext/enhancement.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {

/// What a row is decoded with.
struct RowContext {
  std::uint32_t row = 0;          ///< 0 to 24
  std::uint32_t firstColumn = 0;  ///< of the first byte
  const CharacterSet& characters;
  const Enhancements& enhancements;
};

/// The runs of the boxes in a row of raw bytes. Text outside boxes is not part of any run.
std::vector<TeletextText::Run> decodeRow(std::span<const std::uint8_t> bytes,
                                         const RowContext& context);

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
