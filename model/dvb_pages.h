// SPDX-License-Identifier: MIT

// Which pages of a DVB subtitle stream make a service.
#pragma once

#include <compare>
#include <cstdint>

namespace korr::encoding::subtitling::inline v2_1 {

/// The pages of a DVB subtitle service (EN 300 743, 3.1): its own, and one whose CLUTs and objects
/// it shares with other services of the PID.
struct DvbPages {
  std::uint16_t composition = 0;
  std::uint16_t ancillary = 0;  ///< the same where nothing is shared

  friend auto operator<=>(const DvbPages&, const DvbPages&) = default;
};

}  // namespace korr::encoding::subtitling::inline v2_1
