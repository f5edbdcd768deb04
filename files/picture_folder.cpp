// SPDX-License-Identifier: MIT
#include "files/picture_folder.h"

#include <nlohmann/json.hpp>

#include "cues/cue_time.h"

namespace korr::txsub {

namespace {

namespace fs = std::filesystem;

fs::path makeDirectory(const std::string& path) {
  const fs::path directory = pathFromUtf8(path);
  std::error_code error;
  fs::create_directories(directory, error);
  if (error) throw OutputError("cannot make the directory '" + path + "': " + error.message());
  return directory;
}

}  // namespace

PictureFolder::PictureFolder(const PlayableRequest& request)
    : request_(request),
      files_(makeDirectory(request.path), ""),
      index_(utf8FromPath(pathFromUtf8(request.path) / "index.json")),
      page_(utf8FromPath(pathFromUtf8(request.path) / "index.html")) {
  index_.write("{\"pictures\": [");
}

void PictureFolder::write(const Cue& cue) {
  const auto* bitmap = cue.subtitle->bitmap();
  if (!bitmap || !visibleArea(*bitmap)) return;
  const auto picture =
      pictures_.add(*bitmap, {.x = 0, .y = 0, .width = bitmap->width, .height = bitmap->height});
  const auto [start, stop] = cueMilliseconds(cue);
  const nlohmann::ordered_json entry = {{"file", files_.store(picture)},
                                        {"start", cueTimeText(start, '.')},
                                        {"stop", cueTimeText(stop, '.')}};
  index_.write((isFirst_ ? "\n  " : ",\n  ") + entry.dump());
  isFirst_ = false;
  // Both files say the same of when a picture is shown.
  using encoding::subtitling::kMillisecond;
  track_->onCue(
      {.start = start * kMillisecond, .stop = stop * kMillisecond, .subtitle = cue.subtitle});
}

void PictureFolder::finish() {
  index_.write("\n]}\n");
  preview_.add(request_.service, *track_, 0);
  preview_.write(page_, request_.title, request_.duration ? request_.duration() : 0);
  index_.commit();
  page_.commit();
}

}  // namespace korr::txsub
