// SPDX-License-Identifier: MIT

// Scenarist caption files.
#pragma once

#include <vector>

#include "files/caption_file.h"

namespace korr::txsub {

/// Writes an SCC file: the pairs of field 1 as they were, each on its frame of 29.97 a second, in
/// lines that begin where pairs come after a pause. A pair whose frame is taken follows on the next
/// one. What the format has no room for, field 2 and digital captions, is told once.
class SccFile final : public ICaptionFile {
 public:
  explicit SccFile(const CaptionFileRequest& request);

  void write(std::span<const std::uint8_t> triplets, encoding::subtitling::MediaTime time) override;
  void finish() override;

 private:
  void add(std::uint8_t b1, std::uint8_t b2, std::uint64_t frame);
  void endLine();

  OutputFile file_;
  util::TimeCodeRate rate_;
  log::ILogger* logger_;
  std::string line_;
  std::uint64_t nextFrame_ = 0;  // not yet taken by a pair
  bool hasOthers_ = false;
};

}  // namespace korr::txsub
