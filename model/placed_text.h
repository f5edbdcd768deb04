// SPDX-License-Identifier: MIT

// Text that stands where it stood on the picture, in no system's rows: what pictures were read as.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace korr::encoding::subtitling::inline v2_1 {

struct PlacedText {
  /// 0 to 255 each, as the letters were painted.
  struct Colour {
    std::uint8_t red = 255;
    std::uint8_t green = 255;
    std::uint8_t blue = 255;

    friend bool operator==(const Colour&, const Colour&) = default;
  };

  /// Neighbouring letters of one style.
  struct Run {
    std::string text;  ///< UTF-8, in the order of reading
    Colour colour;
    bool italic = false;

    friend bool operator==(const Run&, const Run&) = default;
  };

  /// Percent of the picture from its left or upper edge.
  struct Line {
    std::vector<Run> runs;  ///< in the order of reading
    double left = 0;        ///< of the first letter on the screen
    double right = 0;       ///< behind the last one
    double baseline = 0;    ///< on which the letters stand
    double height = 0;      ///< of a capital letter
    bool isRightToLeft = false;

    friend bool operator==(const Line&, const Line&) = default;
  };

  std::vector<Line> lines;  ///< top to bottom
  double confidence = 1;    ///< 0 to 1: that all of it is right

  friend bool operator==(const PlacedText&, const PlacedText&) = default;
};

}  // namespace korr::encoding::subtitling::inline v2_1
