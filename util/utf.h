// SPDX-License-Identifier: MIT

// UTF-8 to UTF-16.
#pragma once

#include <string>
#include <string_view>

namespace korr::util::inline v2_1 {

/// `text` in UTF-16. Each byte that is no part of a well-formed UTF-8 sequence becomes U+FFFD.
std::u16string utf8ToUtf16(std::string_view text);

}  // namespace korr::util::inline v2_1
