// SPDX-License-Identifier: MIT

// Languages as documents name them.
#pragma once

#include <string>
#include <string_view>

namespace korr::txsub {

/// The language tag (BCP 47) of an ISO 639-2 code as DVB descriptors carry it, bibliographic codes
/// such as "ger" included: the two-letter code where there is one, else the code itself, "und" when
/// it is none.
std::string languageTag(std::string_view iso639);

/// The terminological code of an ISO 639-2 code, as MP4 asks for it: "deu" for "ger", "und" when it
/// is none.
std::string terminologicalCode(std::string_view iso639);

}  // namespace korr::txsub
