// SPDX-License-Identifier: MIT
#include "files/cue_track.h"

#include <utility>

namespace korr::txsub {

void CueTrack::onCue(const Cue& cue) {
  if (file_) {
    write(cue);
  } else {
    held_.push_back(cue);
  }
}

void CueTrack::open() {
  file_ = openFile_();
  for (const auto& cue : std::exchange(held_, {})) write(cue);
}

void CueTrack::flush() {
  if (file_) file_->flush();
}

void CueTrack::commit() {
  if (file_) file_->finish();
}

void CueTrack::write(const Cue& cue) {
  if (!zero_) zero_ = origin_();
  const auto relative = [&](MediaTime time) { return time > *zero_ ? time - *zero_ : 0; };
  file_->write(
      {.start = relative(cue.start), .stop = relative(cue.stop), .subtitle = cue.subtitle});
}

}  // namespace korr::txsub
