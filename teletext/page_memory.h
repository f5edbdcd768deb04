// SPDX-License-Identifier: MIT

// A page as a receiver keeps it, and what it shows of it.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "model/subtitle.h"
#include "teletext/character_designation.h"
#include "teletext/page_header.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {

/// The packets of one page, kept as they come; decoded only when somebody asks what they show.
struct PageMemory {
  static constexpr std::size_t kRows = 25;
  static constexpr std::size_t kEnhancementPackets = 16;
  using Cells = std::array<std::uint8_t, Packet::kDataSize>;  ///< codes of a row
  using Bytes = std::array<std::uint8_t, Packet::kDataSize>;  ///< raw

  PageHeader header;
  std::array<std::optional<Cells>, kRows> rows;
  std::array<std::optional<Bytes>, kEnhancementPackets> enhancements;  ///< by their designation
  std::optional<CharacterDesignation> designation;                     ///< of X/28/0

  /// Takes the bytes of row 0 to 24. A cell with wrong parity keeps what it had; where the row is
  /// new and nothing else in it differs from `before`, what it has there.
  void storeRow(std::uint32_t row, std::span<const std::uint8_t, Packet::kDataSize> bytes,
                const PageMemory& before);

  void storeEnhancement(std::span<const std::uint8_t, Packet::kDataSize> data);

  /// C4: everything but the header goes.
  void erase();

  /// Cells that were never received with right parity.
  std::size_t damagedCells() const;

  friend bool operator==(const PageMemory&, const PageMemory&) = default;
};

/// What a page is shown with.
struct PageDisplay {
  std::uint32_t characterGroup = 0;              ///< table 32, where no packet designates
  std::optional<CharacterDesignation> magazine;  ///< of M/29/0
  bool isAskedFor = false;                       ///< shows without C5 and C6 too
};

/// The rows with text: those of boxes; of a page that is neither newsflash nor subtitle and has no
/// box all of it, but for the header's row, where a clock runs.
TeletextText compose(const PageMemory& page, const PageDisplay& display);

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
