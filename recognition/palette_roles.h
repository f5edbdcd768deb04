// SPDX-License-Identifier: MIT

// Which colours of a picture the letters are filled with, and which are around them.
#pragma once

#include <cstdint>
#include <vector>

#include "recognition/indexed_picture.h"

namespace korr::recognition {

enum class ColourRole {
  Background,  ///< transparent
  Box,         ///< a rectangle behind the letters
  Edge,        ///< an outline, or a shadow, around the fill
  Fill,
  Blend,  ///< of two others, where the renderer smoothed a contour
};

struct PaletteRoles {
  std::vector<ColourRole> roles;       ///< of each palette entry
  std::vector<std::uint8_t> coverage;  ///< of each palette entry: how much of it is fill, 255 all
  std::vector<std::uint8_t> fillOf;    ///< of each palette entry: the nearest of `fills`
  std::vector<std::uint8_t> fills;     ///< palette entries; empty when there is nothing to read
};

/// Tells by what touches what: an outline parts the fill from the background; a box is thicker than
/// an outline; a blend never fills four pixels in a square for long.
PaletteRoles findRoles(const IndexedPicture& picture);

}  // namespace korr::recognition
