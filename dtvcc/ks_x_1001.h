// SPDX-License-Identifier: MIT

// The Korean character set.
#pragma once

#include <cstdint>

namespace korr::encoding::subtitling::dtvcc {

/// The character of KS X 1001 that two bytes of EUC-KR name, 0xA1 to 0xFE each; 0 when they name
/// none.
char16_t ksX1001Character(std::uint8_t first, std::uint8_t second);

}  // namespace korr::encoding::subtitling::dtvcc
