// SPDX-License-Identifier: MIT

// A page with the cues that are worth a look.
#pragma once

#include <cstddef>
#include <string>

#include "cues/cue.h"
#include "recognition/recognised_text.h"

namespace korr::txsub {

struct DoubtfulCue {
  std::string service;  ///< "DVB subtitles of PID 0x0100"
  MediaTime start = 0;  ///< 100 ns, from the recording's start
  MediaTime stop = 0;   ///< 100 ns
  encoding::subtitling::SubtitleBitmap picture = {};
  recognition::RecognisedPicture text = {};
};

/// One HTML file that needs nothing but itself: of each cue its picture, what was read, why it is
/// doubtful and how sure it is.
class ReportPage {
 public:
  /// More are counted, not shown.
  static constexpr std::size_t kMostCues = 2000;

  /// Throws util::TessaryException when the picture cannot be encoded.
  void add(const DoubtfulCue& cue);

  /// `path` in UTF-8; `title`: what the recording is called. Throws OutputError.
  void write(const std::string& path, const std::string& title) const;

 private:
  std::size_t cues_ = 0;
  std::string service_;  // of the last cue
  std::string body_;
};

}  // namespace korr::txsub
