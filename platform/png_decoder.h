// SPDX-License-Identifier: MIT

// Pixels from PNG files, by whatever the platform offers.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace korr::platform::inline v2_1 {

struct DecodedPng {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> rgba;  ///< width * height * 4, rows top to bottom
};

/// Pictures of more pixels are refused.
inline constexpr std::uint64_t kMaximumPngPixels = 64'000'000;

/// Nothing for bytes that are no PNG file, a damaged one or one that is too large.
[[nodiscard]] std::optional<DecodedPng> decodePng(std::span<const std::uint8_t> png);

}  // namespace korr::platform::inline v2_1
