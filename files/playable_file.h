// SPDX-License-Identifier: MIT

// Files that players show: the cues of one service under one roof.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "cues/cue.h"
#include "model/modes.h"
#include "services/service.h"

namespace korr::txsub {

/// Pictures: a directory of PNG files and a page that shows them.
enum class PlayableFormat { WebVtt, Srt, Ttml, Pictures };

/// Where a TTML document keeps its pictures: in itself or in files beside it.
enum class PictureStorage { Embedded, Files };

struct PlayableRequest {
  PlayableFormat format = PlayableFormat::WebVtt;
  /// Of the service.
  encoding::subtitling::SubtitleInputType type =
      encoding::subtitling::SubtitleInputType::ClosedCaption;
  bool isRead = false;        ///< pictures of the service come as the text that was read in them
  std::string path = "-";     ///< UTF-8; "-" for standard output
  std::string language = "";  ///< ISO 639-2 of the service; empty when unknown
  bool ebuTt = false;         ///< TTML of text: EBU-TT-D
  PictureStorage pictures = PictureStorage::Embedded;  ///< TTML of pictures
  bool plain = false;                                  ///< SRT: the text alone

  // For the page beside pictures:
  std::string title = {};                    ///< what the recording is called
  Service service = {};                      ///< what is shown
  std::function<MediaTime()> duration = {};  ///< of the recording, asked at the end; may be empty
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

/// ".vtt", ".srt", ".ttml", nothing for a directory.
std::string_view extensionOf(PlayableFormat format);

/// Whether the format can hold the subtitles of a system: text, or pictures for DVB.
bool canHold(PlayableFormat format, encoding::subtitling::SubtitleInputType type);

}  // namespace korr::txsub
