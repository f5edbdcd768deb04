// SPDX-License-Identifier: MIT

// Between readings of a word that are equally likely.
#pragma once

#include <string>
#include <vector>

#include "recognition/line_engine.h"

namespace korr::recognition {

/// One of `choices` for each glyph, left to right, the first of them where nothing speaks for
/// another: words in the list before others, usual use of capitals before others. `words` may be
/// null.
std::vector<std::string> likeliestWord(const std::vector<std::vector<std::string>>& choices,
                                       IWordList* words);

}  // namespace korr::recognition
