// The DVB subtitles of a stream.
#pragma once

#include <memory>

#include "txsub/services/service.h"

namespace korr::txsub {

/// Every DVB subtitle stream is one service, with the language that its subtitling descriptor
/// names first (EN 300 468, 6.2.41).
std::unique_ptr<IServiceFinder> createDvbServiceFinder(const ServiceQuery& query);

}  // namespace korr::txsub
