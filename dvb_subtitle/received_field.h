// SPDX-License-Identifier: MIT

// PES data fields as a receiver reads them.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

/// The whole segments of a unit, within its bytes.
struct ReceivedField {
  std::vector<std::span<const std::uint8_t>> segments;  ///< each from its sync_byte on
  std::string damage;                                   ///< what was passed over; empty: nothing
};

/// Reads the PES data fields of one unit (EN 300 743, 7.1): mostly one, from its data_identifier
/// on. The end marker may be missing, and zeros or other padding may follow the last segment. What
/// is no segment is passed over up to the next one.
ReceivedField readField(std::span<const std::uint8_t> unit);

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
