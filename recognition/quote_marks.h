// SPDX-License-Identifier: MIT

// Quotation marks by their shapes: engines mix them up.
#pragma once

#include <string>
#include <vector>

#include "recognition/shape.h"

namespace korr::recognition {

/// For what was read as an apostrophe or a quotation mark at the height of capitals: which one it
/// is, straight or curved like a 6 or a 9. Any other text as it is. `shapes` are alike.
std::string asDrawn(const std::string& text, const std::vector<const Shape*>& shapes, double slant);

}  // namespace korr::recognition
