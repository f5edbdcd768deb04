// Where a DVB subtitle data field ends.
#pragma once

#include <cstdint>
#include <span>

namespace korr::txsub {

/// The PES data field (EN 300 743, 7.1) up to and including end_of_PES_data_field_marker; all of
/// `payload` when it has none where one should be.
std::span<const std::uint8_t> upToEndMarker(std::span<const std::uint8_t> payload);

}  // namespace korr::txsub
