// Files that players show: the cues of one service under one roof.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "txsub/output/cue.h"

namespace korr::txsub {

enum class PlayableFormat { WebVtt, Srt, Ttml };

struct PlayableRequest {
  PlayableFormat format = PlayableFormat::WebVtt;
  std::string path;      ///< UTF-8; "-" for standard output
  std::string language;  ///< ISO 639-2 of the service; empty when unknown
  bool ebuTt = false;    ///< TTML: EBU-TT-D
};

/// One file in the making. Throws OutputError.
class IPlayableFile {
 public:
  virtual ~IPlayableFile() = default;

  /// Adds a cue whose times count from the file's start. Cues come in order of their start.
  virtual void write(const Cue& cue) = 0;

  /// Lets readers of a pipe see what is complete so far.
  virtual void flush() = 0;

  /// Completes the file and gives it its name.
  virtual void finish() = 0;
};

/// Opens the file. Throws OutputError.
std::unique_ptr<IPlayableFile> createPlayableFile(const PlayableRequest& request);

/// ".vtt", ".srt", ".ttml"
std::string_view extensionOf(PlayableFormat format);

/// Whether the format can hold pictures.
bool holdsPictures(PlayableFormat format);

}  // namespace korr::txsub
