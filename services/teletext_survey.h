// SPDX-License-Identifier: MIT

// Which pages of a teletext stream carry text.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "services/service.h"

namespace korr::txsub {

/// Watches the packets of a stream, all pages at once and in little memory. Not thread-safe.
class TeletextSurvey {
 public:
  /// Takes a PES data field from its data_identifier on (EN 300 472, 4.2).
  void take(std::span<const std::uint8_t> field);

  /// The pages that carry letters, ascending, as magazine * 256 + page number; only those that a
  /// viewer can key in.
  std::vector<std::uint32_t> pagesWithText() const;

 private:
  static constexpr std::size_t kMagazines = 8;

  std::array<std::optional<std::uint32_t>, kMagazines> inTransmission_;  ///< page number
  std::array<std::bitset<256>, kMagazines> withText_;                    ///< by page number
};

/// A finder that finds what `finder` does and shows every sample of its stream to `survey`, which
/// is not owned.
std::unique_ptr<IServiceFinder> withSurvey(std::unique_ptr<IServiceFinder> finder,
                                           TeletextSurvey& survey);

/// Pages as a remote control numbers them, neighbours as ranges: "100-102 150 888".
std::string pageList(std::span<const std::uint32_t> pages);

}  // namespace korr::txsub
