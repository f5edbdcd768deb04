// SPDX-License-Identifier: MIT

// Playable TTML of pictures.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "files/output_file.h"
#include "files/picture.h"
#include "files/picture_files.h"
#include "files/playable_file.h"
#include "files/ttml_image_document.h"

namespace korr::txsub {

/// Writes one TtmlImageDocument to a file, each picture stored once. Pictures are embedded
/// (SMPTE-TT) and written as they come, or they are PNG files beside the document (IMSC 1).
class TtmlImageFile final : public IPlayableFile {
 public:
  explicit TtmlImageFile(const PlayableRequest& request);

  void write(const Cue& cue) override;
  void flush() override {}
  void finish() override;

 private:
  using SubtitleBitmap = encoding::subtitling::SubtitleBitmap;

  void start();
  std::string storePicture(const SubtitleBitmap& bitmap, const PictureArea& area);
  void embed(const std::string& id, const PictureSet::ByteBuffer& png);

  bool isEmbedding() const { return !files_; }

  OutputFile file_;
  TtmlImageDocument document_;
  std::optional<PictureFiles> files_;  // none when pictures are embedded
  bool isStarted_ = false;
  PictureSet pictures_;
};

}  // namespace korr::txsub
