// SPDX-License-Identifier: MIT

// A line as an engine likes it.
#pragma once

#include "recognition/glyph_lines.h"
#include "recognition/line_engine.h"

namespace korr::recognition {

struct ScaledLine {
  LineImage image;
  double scale = 1;  ///< pixels of the image per pixel of the picture
  double left = 0;   ///< of the picture, at the image's left edge
};

/// The letters of one line alone, dark on white, padded and scaled so that its tall letters are as
/// high as engines are trained for, times `zoom`.
ScaledLine drawLine(const LetterMask& mask, const LetterParts& parts, const GlyphLine& line,
                    Script script, double zoom);

}  // namespace korr::recognition
