// SPDX-License-Identifier: MIT

// Scenarist caption files.
#pragma once

#include <string>

#include "files/caption_file.h"

namespace korr::txsub {

/// Writes an SCC file: the pairs of field 1 as they were, each on its frame of 29.97 a second, in
/// lines that begin where pairs come after a pause. A pair whose frame is taken follows on the next
/// one. Where field 1 has none at all, those of field 2 are written, which readers know by their
/// codes. What the format has no room for, the other field and digital captions, is told once.
class SccFile final : public ICaptionFile {
 public:
  explicit SccFile(const CaptionFileRequest& request);

  void write(std::span<const std::uint8_t> triplets, encoding::subtitling::MediaTime time) override;
  void finish() override;

 private:
  /// The lines of one field.
  struct Field {
    std::string lines;
    std::uint64_t nextFrame = 0;  // not yet taken by a pair; 0: no pair yet
  };

  void add(std::uint8_t b1, std::uint8_t b2, std::uint64_t frame, Field& field) const;

  OutputFile file_;
  util::TimeCodeRate rate_;
  log::ILogger* logger_;
  Field field1_;
  Field field2_;  // until field 1 has a pair
  bool hasField2_ = false;
  bool hasDigital_ = false;
};

}  // namespace korr::txsub
