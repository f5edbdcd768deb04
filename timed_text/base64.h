// Base64 as RFC 4648, clause 4, defines it.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace korr::encoding::subtitling::ttml::inline v2_1 {

/// The base64 text of `bytes`, padded with "=". `separator` follows every run of 64 groups of four
/// characters, a run that a padded group completes included.
std::string encodeBase64(std::span<const std::uint8_t> bytes, std::string_view separator = {});

}  // namespace korr::encoding::subtitling::ttml::inline v2_1
