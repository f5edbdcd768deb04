// SPDX-License-Identifier: MIT

// Text fields of DVB tables.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace korr::txsub {

/// `text` in UTF-8 (ETSI EN 300 468, annex A): the default Latin table, ISO 8859-1 and -5, UTF-16
/// and UTF-8. Of other tables only ASCII is read; any other character becomes U+FFFD. Control codes
/// are left out.
std::string dvbTextToUtf8(std::span<const std::uint8_t> text);

}  // namespace korr::txsub
