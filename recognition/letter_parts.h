// SPDX-License-Identifier: MIT

// The connected parts of the letters in a picture.
#pragma once

#include <cstdint>
#include <vector>

#include "recognition/palette_roles.h"

namespace korr::recognition {

/// A picture as a renderer made it before it was coloured: how much of each pixel is letter.
struct LetterMask {
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::vector<std::uint8_t> coverage;  ///< 255: all of it

  std::uint8_t at(std::int32_t x, std::int32_t y) const {
    return coverage[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                    static_cast<std::size_t>(x)];
  }
};

LetterMask maskOf(const IndexedPicture& picture, const PaletteRoles& roles);

/// From this coverage on a pixel counts as letter.
inline constexpr std::uint8_t kLeastCoverage = 128;

/// Pixels that touch, diagonally too.
struct Part {
  Box box;
  std::int32_t pixels = 0;
};

struct LetterParts {
  std::vector<Part> parts;            ///< by their topmost row
  std::vector<std::uint32_t> labels;  ///< of each pixel: part + 1, 0 for none
  bool isTooMany = false;             ///< more than kMostParts: no letters, then none are listed
};

/// Two full screens of text have fewer.
inline constexpr std::size_t kMostParts = 4000;

LetterParts findParts(const LetterMask& mask);

}  // namespace korr::recognition
