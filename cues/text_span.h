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

/// How letters or windows stand out from what is behind them; shadows fall to the side named.
enum class TextEdge { Raised, Depressed, Uniform, LeftDropShadow, RightDropShadow };

struct TextOutline {
  TextColour colour = TextColour::Black;
  TextEdge edge = TextEdge::Uniform;

  friend bool operator==(const TextOutline&, const TextOutline&) = default;
};

enum class TextOffset { Normal, Subscript, Superscript };

/// Characters of one style.
struct TextSpan {
  std::string text;  ///< UTF-8
  TextColour foreground = TextColour::White;
  TextColour background = TextColour::Black;
  std::uint8_t backgroundAlpha = 0xFF;  ///< 0xFF opaque; 0x99 behind teletext
  bool showsFill = false;               ///< the background is the fill of the window
  bool italic = false;
  bool underline = false;
  std::optional<TextOutline> outline = {};  ///< around the letters
  std::uint8_t foregroundAlpha = 0xFF;
  double size = 1;  ///< of the letters, 1 as high as their row has them
  TextOffset offset = TextOffset::Normal;

  bool hasStyleOf(const TextSpan& other) const {
    return foreground == other.foreground && background == other.background &&
           backgroundAlpha == other.backgroundAlpha && showsFill == other.showsFill &&
           italic == other.italic && underline == other.underline && outline == other.outline &&
           foregroundAlpha == other.foregroundAlpha && size == other.size && offset == other.offset;
  }
};

}  // namespace korr::txsub
