// SPDX-License-Identifier: MIT

// Playable SubRip.
#pragma once

#include <cstdint>
#include <string>

#include "files/output_file.h"
#include "files/playable_file.h"

namespace korr::txsub {

/// What SRT players are told beside the text. The format has no standard; these tags are what the
/// common players read.
enum class SrtMarkup {
  Full,   ///< italics, underline, `<font color>`, and `{\an8}` for what stands in the upper half
  Plain,  ///< nothing
};

/// Writes an SRT file: numbered entries, rows as lines.
class SrtFile final : public IPlayableFile {
 public:
  SrtFile(const std::string& path, SrtMarkup markup) : file_(path), markup_(markup) {}

  void write(const Cue& cue) override;
  void flush() override { file_.flush(); }
  void finish() override { file_.commit(); }

 private:
  OutputFile file_;
  SrtMarkup markup_;
  std::uint64_t entries_ = 0;
};

/// The lines of an entry, each with its line feed; empty for a subtitle without text. No line reads
/// as the times of an entry, whatever its text: "-->" becomes "-- >".
std::string srtText(const encoding::subtitling::Subtitle& subtitle,
                    SrtMarkup markup = SrtMarkup::Full);

}  // namespace korr::txsub
