// Playable files as text.
#pragma once

#include <string>
#include <vector>

#include "tests/support/temporary_directory.h"
#include "txsub/output/playable_file.h"

namespace korr::txsub {

using test_support::TemporaryDirectory;

/// What a file of these cues reads.
inline std::string playableText(PlayableRequest request, const std::vector<Cue>& cues) {
  const TemporaryDirectory directory;
  request.path = directory.file("file");
  const auto file = createPlayableFile(request);
  for (const Cue& cue : cues) file->write(cue);
  file->finish();
  return directory.read("file");
}

}  // namespace korr::txsub
