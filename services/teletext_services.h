// SPDX-License-Identifier: MIT

// The teletext subtitle pages of a stream.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "services/service.h"

namespace korr::txsub {

/// The subtitle pages that a stream's descriptors name, in their order; those on air as subtitles
/// (C6) where none are named, or where the query says so. A query's language and page are heeded as
/// the filter's configuration is.
std::unique_ptr<IServiceFinder> createTeletextServiceFinder(const ServiceQuery& query,
                                                            log::ILogger* logger);

/// The character-set group (EN 300 706, table 32) in which a language (ISO 639-2) is written.
std::uint32_t characterGroupOf(std::string_view language);

}  // namespace korr::txsub
