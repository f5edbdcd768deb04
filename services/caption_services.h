// SPDX-License-Identifier: MIT

// The caption services of a stream.
#pragma once

#include <memory>

#include "services/service.h"

namespace korr::txsub {

/// Every caption stream may carry CC1 to CC4 (CEA-608, 5.1); which of them do shows only in their
/// text. Digital services (CEA-708) are those that a descriptor names and those that are on air.
std::unique_ptr<IServiceFinder> createCaptionServiceFinder(const ServiceQuery& query);

}  // namespace korr::txsub
