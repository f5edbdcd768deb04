// SPDX-License-Identifier: MIT

// The PES data fields of DVB subtitles (EN 300 743, 7.1), as far as a reader looks into them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace korr::txsub {

inline constexpr std::size_t kDvbFieldHeader = 2;  ///< bytes: data_identifier, subtitle_stream_id

/// A subtitling segment (EN 300 743, 7.2).
struct DvbSegment {
  std::uint8_t type = 0;
  std::uint16_t page = 0;
  std::span<const std::uint8_t> bytes;  ///< from its sync byte on
};

/// Takes the next segment off `rest`; nothing, and `rest` as it was, where no whole one stands.
[[nodiscard]] std::optional<DvbSegment> takeDvbSegment(std::span<const std::uint8_t>& rest);

/// Whether end_of_PES_data_field_marker comes next.
bool isAtEndMarker(std::span<const std::uint8_t> rest);

/// The field up to and including its end marker; all of `payload` when it has none where one should
/// be.
std::span<const std::uint8_t> upToEndMarker(std::span<const std::uint8_t> payload);

}  // namespace korr::txsub
