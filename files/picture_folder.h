// SPDX-License-Identifier: MIT

// Pictures to look at.
#pragma once

#include <memory>

#include "files/output_file.h"
#include "files/picture.h"
#include "files/picture_files.h"
#include "files/playable_file.h"
#include "files/preview/preview_document.h"

namespace korr::txsub {

/// A directory with a PNG of the whole display for each different picture, and "index.json", which
/// lists what is shown when: {"pictures": [{"file": "0001.png", "start": "00:00:01.000",
/// "stop": "00:00:03.500"}, ...]}, and "index.html", a page that shows them all.
class PictureFolder final : public IPlayableFile {
 public:
  /// The request's path names the directory, which is made when it is not there.
  explicit PictureFolder(const PlayableRequest& request);

  void write(const Cue& cue) override;
  void flush() override {}
  void finish() override;

 private:
  PlayableRequest request_;
  PictureFiles files_;
  OutputFile index_;
  OutputFile page_;
  PictureSet pictures_;
  PreviewDocument preview_;
  std::unique_ptr<PreviewTrack> track_ = preview_.makeTrack();
  bool isFirst_ = true;
};

}  // namespace korr::txsub
