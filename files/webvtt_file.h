// Playable WebVTT.
#pragma once

#include <string>
#include <vector>

#include "files/output_file.h"
#include "files/playable_file.h"

namespace korr::txsub {

/// Writes a WebVTT file (W3C WebVTT, 4.1). Rows that stand together are one cue, placed by
/// `line:` and `position:` where they stood on screen; colours are the default classes (clause 5).
class WebVttFile final : public IPlayableFile {
 public:
  explicit WebVttFile(const std::string& path);

  void write(const Cue& cue) override;
  void flush() override { file_.flush(); }
  void finish() override { file_.commit(); }

 private:
  OutputFile file_;
};

/// What a cue block says, its times apart.
struct WebVttBlock {
  std::string settings;
  std::string payload;  ///< lines, without a line feed at the end
};

/// One block per group of rows that stand together; none for a subtitle without text.
std::vector<WebVttBlock> webVttBlocks(const encoding::subtitling::Subtitle& subtitle);

/// One cue block per group of rows that stand together, each with the blank line after it; empty
/// for a subtitle without text.
std::string webVttCues(const Cue& cue);

}  // namespace korr::txsub
