// SPDX-License-Identifier: MIT

// Playable TTML of text.
#pragma once

#include "files/output_file.h"
#include "files/playable_file.h"
#include "files/ttml_text_document.h"

namespace korr::txsub {

/// Writes one TtmlTextDocument to a file; nothing is written before the end.
class TtmlTextFile final : public IPlayableFile {
 public:
  explicit TtmlTextFile(const PlayableRequest& request)
      : file_(request.path), document_(request.language, request.ebuTt) {}

  void write(const Cue& cue) override { document_.add(cue); }
  void flush() override {}
  void finish() override {
    file_.write(document_.text());
    file_.commit();
  }

 private:
  OutputFile file_;
  TtmlTextDocument document_;
};

}  // namespace korr::txsub
