// Playable TTML of pictures.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "files/output_file.h"
#include "files/picture.h"
#include "files/picture_files.h"
#include "files/playable_file.h"
#include "files/ttml_markup.h"

namespace korr::txsub {

/// Writes one TTML document of bitmap subtitles: a div per picture and interval in a region where
/// the picture stood on screen, cropped to what can be seen, each picture stored once. Pictures are
/// embedded (SMPTE-TT, SMPTE ST 2052-1) and written as they come, or they are PNG files beside the
/// document (image profile of W3C IMSC 1).
class TtmlImageFile final : public IPlayableFile {
 public:
  explicit TtmlImageFile(const PlayableRequest& request);

  void write(const Cue& cue) override;
  void flush() override {}
  void finish() override;

 private:
  using SubtitleBitmap = encoding::subtitling::SubtitleBitmap;

  struct DisplaySize {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
  };

  void start(std::optional<DisplaySize> display);
  std::string storePicture(const SubtitleBitmap& bitmap, const PictureArea& area);
  void embed(const std::string& id, const PictureSet::ByteBuffer& png);
  Attributes regionOf(const SubtitleBitmap& bitmap, const PictureArea& area) const;

  bool isEmbedding() const { return !files_; }

  std::string language_;
  OutputFile file_;
  std::optional<PictureFiles> files_;  // none when pictures are embedded
  bool isStarted_ = false;
  DisplaySize display_;  // of the first picture: what the document's pixels are measured by
  PictureSet pictures_;
  ReferenceTable regions_{"region", "Region"};
  std::string body_;
};

}  // namespace korr::txsub
