// SPDX-License-Identifier: MIT

// Files for players, written whole and read back.
#pragma once

#include <string>
#include <vector>

#include "cues/cue.h"
#include "files/playable_file.h"
#include "testkit/temporary_directory.h"

namespace korr::txsub {

using test_support::TemporaryDirectory;

inline void writePlayable(const PlayableRequest& request, const std::vector<Cue>& cues) {
  const auto file = createPlayableFile(request);
  for (const Cue& cue : cues) file->write(cue);
  file->finish();
}

/// What a file of these cues reads.
inline std::string playableText(PlayableRequest request, const std::vector<Cue>& cues) {
  const TemporaryDirectory directory;
  request.path = directory.file("file");
  writePlayable(request, cues);
  return directory.read("file");
}

}  // namespace korr::txsub
