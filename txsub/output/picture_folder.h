// Pictures to look at.
#pragma once

#include <string>

#include "txsub/output/output_file.h"
#include "txsub/output/picture.h"
#include "txsub/output/picture_files.h"
#include "txsub/output/playable_file.h"

namespace korr::txsub {

/// A directory with a PNG of the whole display for each different picture, and "index.json", which
/// lists what is shown when: {"pictures": [{"file": "0001.png", "start": "00:00:01.000",
/// "stop": "00:00:03.500"}, ...]}.
class PictureFolder final : public IPlayableFile {
 public:
  /// `path` names the directory, which is made when it is not there.
  explicit PictureFolder(const std::string& path);

  void write(const Cue& cue) override;
  void flush() override {}
  void finish() override;

 private:
  PictureFiles files_;
  OutputFile index_;
  PictureSet pictures_;
  bool isFirst_ = true;
};

}  // namespace korr::txsub
