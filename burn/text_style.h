// SPDX-License-Identifier: MIT

// How text is drawn.
#pragma once

#include <string>

#include "burn/frame_buffer.h"

namespace korr::encoding::subtitling::burn::inline v2_1 {

enum class FontStyle { Regular, Italic, Underline };

struct TextStyle {
  std::string family = "Arial";
  double size = 12;        ///< points; one is 4/3 pixels
  double widthScale = 1;   ///< stretches the letters sideways
  double heightScale = 1;  ///< and upwards
  Argb textColour = 0xFFFFFFFF;
  Argb backgroundColour = 0;
  FontStyle fontStyle = FontStyle::Regular;
};

}  // namespace korr::encoding::subtitling::burn::inline v2_1
