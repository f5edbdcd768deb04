// Playable SubRip.
#pragma once

#include <cstdint>
#include <string>

#include "files/output_file.h"
#include "files/playable_file.h"

namespace korr::txsub {

/// Writes an SRT file: numbered entries, rows as lines, italics and underline as the usual tags.
class SrtFile final : public IPlayableFile {
 public:
  explicit SrtFile(const std::string& path) : file_(path) {}

  void write(const Cue& cue) override;
  void flush() override { file_.flush(); }
  void finish() override { file_.commit(); }

 private:
  OutputFile file_;
  std::uint64_t entries_ = 0;
};

/// The lines of an entry, each with its line feed; empty for a subtitle without text.
std::string srtText(const encoding::subtitling::Subtitle& subtitle);

}  // namespace korr::txsub
