// SPDX-License-Identifier: MIT

// Characters of one style, whichever system they came from.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace korr::txsub {

/// The eight colours of line 21 and teletext, by their WebVTT names: "lime" is their green. Other
/// values are any other colour, as the functions below make them.
enum class TextColour : std::uint32_t { White, Lime, Blue, Cyan, Red, Yellow, Magenta, Black };

/// The colour of these components, 0 to 255, of which four levels are told apart.
TextColour textColourOf(std::uint8_t red, std::uint8_t green, std::uint8_t blue);

/// The colour of exactly these components, 0 to 255; what differs from one of the eight by no more
/// than conversions between RGB and Y'CbCr and their narrow ranges do is that one.
TextColour paintedColourOf(std::uint8_t red, std::uint8_t green, std::uint8_t blue);

/// The name of the colour, or of that of the eight that is nearest.
const char* colourName(TextColour colour);

/// "#RRGGBB"
std::string colourHex(TextColour colour);

/// Characters of one style.
struct TextSpan {
  std::string text;  ///< UTF-8
  TextColour foreground = TextColour::White;
  TextColour background = TextColour::Black;
  std::uint8_t backgroundAlpha = 0xFF;  ///< 0xFF opaque; 0x99 behind teletext
  bool italic = false;
  bool underline = false;
  std::optional<TextColour> outline = {};  ///< around the letters

  bool hasStyleOf(const TextSpan& other) const {
    return foreground == other.foreground && background == other.background &&
           backgroundAlpha == other.backgroundAlpha && italic == other.italic &&
           underline == other.underline && outline == other.outline;
  }
};

}  // namespace korr::txsub
