// SPDX-License-Identifier: MIT

// Playable WebVTT.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "files/output_file.h"
#include "files/playable_file.h"

namespace korr::txsub {

/// Classes of colours in cues: "yellow", "bg_blue".
using ColourClasses = std::set<std::string>;

/// Writes a WebVTT file (W3C WebVTT, 4.1). Rows that stand together are one cue, placed by
/// `line:` and `position:` where they stood on screen; colours are the default classes (clause 5),
/// which the file's style sheet defines, since browsers do not. A sheet must stand before the first
/// cue, so cues are held until it is known which colours they have; where a reader of a pipe waits,
/// or they become many, all colours are defined.
class WebVttFile final : public IPlayableFile {
 public:
  /// Bytes of cues that are held at most.
  static constexpr std::size_t kMostHeld = 16 * 1024 * 1024;

  explicit WebVttFile(const std::string& path) : file_(path), isPipe_(path == "-") {}

  void write(const Cue& cue) override;
  void flush() override;
  void finish() override;

 private:
  void writeHeld(const ColourClasses& classes);

  OutputFile file_;
  bool isPipe_;
  bool isBegun_ = false;  // the header is written, and nothing is held any more
  std::string held_;
  ColourClasses classes_;  // of what is held
};

/// "WEBVTT" and the style sheet (8.1, STYLE blocks) that defines the classes, up to the first cue.
std::string webVttHeader(const ColourClasses& classes);

/// Every class that cues can have.
const ColourClasses& allColourClasses();

/// What a cue block says, its times apart.
struct WebVttBlock {
  std::string settings;
  ColourClasses classes;  ///< that the payload uses
  std::string payload;    ///< lines, without a line feed at the end
};

/// One block per group of rows that stand together; none for a subtitle without text.
std::vector<WebVttBlock> webVttBlocks(const encoding::subtitling::Subtitle& subtitle);

/// One cue block per group of rows that stand together, each with the blank line after it; empty
/// for a subtitle without text. Their classes are added to `classes`, which may be null.
std::string webVttCues(const Cue& cue, ColourClasses* classes = nullptr);

}  // namespace korr::txsub
