// SPDX-License-Identifier: MIT

// Text as broadcasters draw it into DVB subtitles.
#pragma once

#include <cstdint>
#include <string_view>

#include "testkit/encoders/dvb_encoder.h"

namespace korr::samples {

using encoders::IndexedPicture;

/// Codes of text pictures: transparent, an edge, and fourteen steps from there to the full colour.
inline constexpr std::uint8_t kNothing = 0;
inline constexpr std::uint8_t kEdge = 1;
inline constexpr std::uint8_t kFullColour = 15;

/// One line of text in 4-bit codes, smooth and with an edge around it. Capital letters, digits and
/// some signs; anything else is a space. `height` of the line in pixels, 12 and more.
IndexedPicture textPicture(std::string_view text, std::uint32_t height);

/// The CLUT of text pictures in a colour given as Y, Cr and Cb.
std::vector<encoders::DvbEncoder::ClutEntry> textClut(std::uint8_t y, std::uint8_t cr,
                                                      std::uint8_t cb);

}  // namespace korr::samples
