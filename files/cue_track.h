// SPDX-License-Identifier: MIT

// The cues of one service on their way into a file.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "cues/cue.h"
#include "files/playable_file.h"

namespace korr::txsub {

/// Holds cues back until a file is opened for them, then passes them on with times that count from
/// the file's start.
class CueTrack final : public ICueOutput {
 public:
  /// `origin` yields the time that becomes 0 of the file; asked once, at the first cue.
  using Origin = std::function<MediaTime()>;

  using OpenFile = std::function<std::unique_ptr<IPlayableFile>()>;

  CueTrack(Origin origin, OpenFile openFile)
      : origin_(std::move(origin)), openFile_(std::move(openFile)) {}

  void onCue(const Cue& cue) override;
  void open() override;
  void flush() override;
  void commit() override;

 private:
  void write(const Cue& cue);

  Origin origin_;
  OpenFile openFile_;
  std::optional<MediaTime> zero_;
  std::vector<Cue> held_;
  std::unique_ptr<IPlayableFile> file_;
};

}  // namespace korr::txsub
