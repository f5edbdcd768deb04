// One of several DVB subtitle services that share a PID.
#pragma once

#include <cstdint>
#include <vector>

#include "services/service.h"

namespace korr::txsub {

/// The data field (EN 300 743, 7.1) with the segments of `pages` only, as if nothing but that
/// service were on the PID. The CLUTs and objects of the ancillary page, which other services
/// share, get the composition page's number. A payload that is no whole data field stays as it is.
std::vector<std::uint8_t> keepPages(std::vector<std::uint8_t> dataField, const DvbPages& pages);

}  // namespace korr::txsub
