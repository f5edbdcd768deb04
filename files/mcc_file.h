// SPDX-License-Identifier: MIT

// MacCaption files.
#pragma once

#include <utility>
#include <vector>

#include "files/caption_file.h"

namespace korr::txsub {

/// Writes an MCC file: a line a picture, with all its triplets as they were in a caption
/// distribution packet. The first pictures are held back until their times tell the frame rate.
class MccFile final : public ICaptionFile {
 public:
  explicit MccFile(const CaptionFileRequest& request);

  void write(std::span<const std::uint8_t> triplets, encoding::subtitling::MediaTime time) override;
  void finish() override;

 private:
  using MediaTime = encoding::subtitling::MediaTime;
  using Picture = std::pair<MediaTime, std::vector<std::uint8_t>>;

  void begin();
  void writeLines(std::span<const std::uint8_t> triplets, MediaTime time);

  OutputFile file_;
  bool dropFrame_;
  std::vector<Picture> held_;
  std::optional<util::TimeCodeRate> rate_;
  std::uint16_t sequence_ = 0;
};

}  // namespace korr::txsub
