// SPDX-License-Identifier: MIT

// The DVB subtitles of a stream.
#pragma once

#include <memory>

#include "services/service.h"

namespace korr::txsub {

/// Every entry of a DVB subtitle stream's subtitling descriptor is one service (EN 300
/// 468, 6.2.41); a stream without one is a service all the same.
std::unique_ptr<IServiceFinder> createDvbServiceFinder(const ServiceQuery& query);

}  // namespace korr::txsub
