// SPDX-License-Identifier: MIT

// From the shapes of a line to its text.
#pragma once

#include <string>
#include <vector>

#include "recognition/letter_sizes.h"
#include "recognition/line_engine.h"
#include "recognition/recognised_text.h"
#include "recognition/seen_picture.h"
#include "recognition/word_gaps.h"

namespace korr::recognition {

/// Everything that has been learnt of a service. Not owned.
struct Learnt {
  const ShapeBook& book;
  const WordGaps& gaps;
  const LetterSizes& sizes;
  const std::vector<std::string>& texts;  ///< SeenGlyph::reading counts these
  const std::vector<Colour>& colours;     ///< SeenGlyph::colour counts these
  IWordList* words = nullptr;             ///< may be null
};

/// Why is said in `doubts`, one sentence each.
RecognisedLine decodeLine(const SeenLine& line, const Learnt& learnt,
                          std::vector<std::string>& doubts);

}  // namespace korr::recognition
