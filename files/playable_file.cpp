// SPDX-License-Identifier: MIT
#include "files/playable_file.h"

#include "files/picture_folder.h"
#include "files/srt_file.h"
#include "files/ttml_image_file.h"
#include "files/ttml_text_file.h"
#include "files/webvtt_file.h"

namespace korr::txsub {

using encoding::subtitling::SubtitleInputType;

std::unique_ptr<IPlayableFile> createPlayableFile(const PlayableRequest& request) {
  switch (request.format) {
    case PlayableFormat::WebVtt:
      return std::make_unique<WebVttFile>(request.path);
    case PlayableFormat::Srt:
      return std::make_unique<SrtFile>(request.path,
                                       request.plain ? SrtMarkup::Plain : SrtMarkup::Full);
    case PlayableFormat::Pictures:
      return std::make_unique<PictureFolder>(request);
    case PlayableFormat::Ttml:
      break;
  }
  if (request.type == SubtitleInputType::DvbSubtitle && !request.isRead) {
    return std::make_unique<TtmlImageFile>(request);
  }
  return std::make_unique<TtmlTextFile>(request);
}

std::string_view extensionOf(PlayableFormat format) {
  switch (format) {
    case PlayableFormat::WebVtt:
      return ".vtt";
    case PlayableFormat::Srt:
      return ".srt";
    case PlayableFormat::Ttml:
      return ".ttml";
    case PlayableFormat::Pictures:
      break;
  }
  return "";
}

bool canHold(PlayableFormat format, SubtitleInputType type) {
  switch (format) {
    case PlayableFormat::WebVtt:
    case PlayableFormat::Srt:
      return type != SubtitleInputType::DvbSubtitle;
    case PlayableFormat::Pictures:
      return type == SubtitleInputType::DvbSubtitle;
    case PlayableFormat::Ttml:
      break;
  }
  return true;
}

}  // namespace korr::txsub
