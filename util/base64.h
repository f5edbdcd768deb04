// Base64 (RFC 4648, clause 4).
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace korr::util::inline v2_1 {

/// Nothing unless `text` is base64 to the letter: whole groups of four, padding only at the end.
std::optional<std::vector<std::uint8_t>> decodeBase64(std::string_view text);

}  // namespace korr::util::inline v2_1
