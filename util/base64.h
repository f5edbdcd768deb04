// SPDX-License-Identifier: MIT

// Base64 (RFC 4648, clause 4).
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korr::util::inline v2_1 {

/// The base64 text of `bytes`, padded with "=". `separator` follows every run of 64 groups of four
/// characters, a run that a padded group completes included.
std::string encodeBase64(std::span<const std::uint8_t> bytes, std::string_view separator = {});

/// Nothing unless `text` is base64 to the letter: whole groups of four, padding only at the end.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> decodeBase64(std::string_view text);

}  // namespace korr::util::inline v2_1
