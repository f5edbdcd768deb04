#include "txsub/output/playable_file.h"

#include "txsub/output/output_file.h"
#include "txsub/output/srt_file.h"
#include "txsub/output/webvtt_file.h"

namespace korr::txsub {

std::unique_ptr<IPlayableFile> createPlayableFile(const PlayableRequest& request) {
  switch (request.format) {
    case PlayableFormat::WebVtt:
      return std::make_unique<WebVttFile>(request.path);
    case PlayableFormat::Srt:
      return std::make_unique<SrtFile>(request.path);
    case PlayableFormat::Ttml:
      break;
  }
  throw OutputError("playable TTML files are not written yet");
}

std::string_view extensionOf(PlayableFormat format) {
  switch (format) {
    case PlayableFormat::WebVtt:
      return ".vtt";
    case PlayableFormat::Srt:
      return ".srt";
    case PlayableFormat::Ttml:
      break;
  }
  return ".ttml";
}

bool holdsPictures(PlayableFormat format) {
  return format == PlayableFormat::Ttml;
}

}  // namespace korr::txsub
