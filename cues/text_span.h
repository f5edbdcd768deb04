// Characters of one style, whichever system they came from.
#pragma once

#include <cstdint>
#include <string>

namespace korr::txsub {

/// The eight colours of both systems, by their WebVTT names: "lime" is their green.
enum class TextColour { White, Lime, Blue, Cyan, Red, Yellow, Magenta, Black };

const char* colourName(TextColour colour);

/// Characters of one style.
struct TextSpan {
  std::string text;  ///< UTF-8
  TextColour foreground = TextColour::White;
  TextColour background = TextColour::Black;
  std::uint8_t backgroundAlpha = 0xFF;  ///< 0xFF opaque; 0x99 behind teletext
  bool italic = false;
  bool underline = false;

  bool hasStyleOf(const TextSpan& other) const {
    return foreground == other.foreground && background == other.background &&
           backgroundAlpha == other.backgroundAlpha && italic == other.italic &&
           underline == other.underline;
  }
};

}  // namespace korr::txsub
