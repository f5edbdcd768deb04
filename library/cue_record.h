// SPDX-License-Identifier: MIT

// A cue as callers of the library see it.
#pragma once

#include <string>
#include <vector>

#include "cues/cue.h"
#include "cues/text_span.h"
#include "library/include/txsub/txsub.h"

namespace korr::txsub {

/// Owns what a txsub_cue points to.
class CueRecord {
 public:
  /// Of the service `service`, with times that count from `origin`.
  CueRecord(std::size_t service, const Cue& cue, MediaTime origin);
  CueRecord(const CueRecord&) = delete;
  CueRecord& operator=(const CueRecord&) = delete;

  const txsub_cue& view() const { return view_; }

  /// With times that count from `origin`.
  const Cue& cue() const { return cue_; }

 private:
  /// A line, its texts in one place.
  struct Line {
    std::vector<TextSpan> spans;
    double left = 0;
    double top = 0;
  };

  void takeText();
  void takePicture();

  Cue cue_;
  std::string text_;
  std::vector<Line> lines_;
  std::vector<std::vector<txsub_run>> runs_;
  std::vector<txsub_line> lineViews_;
  std::vector<std::uint8_t> pixels_;
  txsub_picture picture_{};
  txsub_cue view_{};
};

}  // namespace korr::txsub
