// SPDX-License-Identifier: MIT

// The cues of one service as frames.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "files/frames/subtitle_painter.h"
#include "files/output_file.h"
#include "files/playable_file.h"

namespace korr::txsub {

/// One PNG file: the subtitle that is shown at a moment, over a picture or over nothing.
class StillFile final : public IPlayableFile {
 public:
  /// `at` counts from the file's start, as the cues' times do.
  StillFile(const std::string& path, encoding::subtitling::SubtitleInputType type, MediaTime at,
            Frame background);

  void write(const Cue& cue) override;
  void flush() override {}
  void finish() override;

 private:
  OutputFile file_;
  encoding::subtitling::SubtitleInputType type_;
  MediaTime at_;
  Frame frame_;
  std::shared_ptr<const Subtitle> subtitle_;
};

/// Raw frames of bytes R, G, B, A at a steady rate, from the file's start to the end of the
/// recording; transparent where no subtitle is.
class RawFramesFile final : public IPlayableFile {
 public:
  /// A gap of more than a day is a break in time: no frames are written for it. `framesPerSecond`
  /// above 0; `duration` tells the recording's once it has been read.
  RawFramesFile(const std::string& path, encoding::subtitling::SubtitleInputType type,
                std::uint32_t width, std::uint32_t height, double framesPerSecond,
                std::function<MediaTime()> duration);

  void write(const Cue& cue) override;
  void flush() override { file_.flush(); }
  void finish() override;

 private:
  void writeBlankUntil(MediaTime end);
  void writeUntil(MediaTime end, const std::vector<std::uint8_t>& rgba);

  OutputFile file_;
  SubtitlePainter painter_;
  Frame frame_;
  double framesPerSecond_;
  std::function<MediaTime()> duration_;
  std::vector<std::uint8_t> blank_;
  MediaTime end_ = 0;          // of what has been written
  MediaTime leftOut_ = 0;      // of the recording's time, in breaks
  std::uint64_t written_ = 0;  // frames
};

/// A PNG file as a frame. Throws util::TessaryException, with the path, for anything else.
Frame readPicture(const std::string& path);

}  // namespace korr::txsub
