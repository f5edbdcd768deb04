// SPDX-License-Identifier: MIT

// What the letters of a picture say.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "recognition/indexed_picture.h"

namespace korr::recognition {

/// Letters of one style.
struct TextRun {
  std::string text;  ///< UTF-8
  Colour colour;
  bool italic = false;
};

struct RecognisedLine {
  std::vector<TextRun> runs;  ///< in the order of reading; neighbours differ in style
  Box box;                    ///< of the letters, pixels of the display
  std::int32_t baseline = 0;  ///< pixels of the display
  std::int32_t height = 0;    ///< of tall letters, pixels
  double confidence = 1;      ///< 0 to 1: of its most doubtful word

  std::string text() const;
};

struct RecognisedPicture {
  std::int32_t displayWidth = 0;  ///< pixels
  std::int32_t displayHeight = 0;
  std::vector<RecognisedLine> lines;  ///< top to bottom
  double confidence = 1;              ///< 0 to 1: of its most doubtful line
  std::vector<std::string> doubts;    ///< why it is not sure, for people

  std::string text() const;  ///< lines parted by '\n'
};

/// Below this a picture is worth a look: of made subtitles one in fifty is, three quarters of the
/// wrong ones among them.
inline constexpr double kDoubtful = 0.8;

}  // namespace korr::recognition
