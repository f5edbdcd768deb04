// SPDX-License-Identifier: MIT

// What the sub-pictures of a DVD do not hold themselves.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace korr::encoding::subtitling::disc::inline v2_1 {

/// Red, green and blue of the sixteen colours of a title.
using DvdPalette = std::array<std::array<std::uint8_t, 3>, 16>;

struct DvdSetup {
  std::uint32_t width = 720;  ///< of the video, pixels
  std::uint32_t height = 576;
  std::optional<DvdPalette> palette;  ///< nothing where nobody says it
};

/// Reads the lines "size: 720x576" and "palette: 000000, ffffff, ..." of a VobSub index, which
/// Matroska has as the track's private data. What is damaged stays as it is without.
DvdSetup parseDvdSetup(std::string_view text);

}  // namespace korr::encoding::subtitling::disc::inline v2_1
