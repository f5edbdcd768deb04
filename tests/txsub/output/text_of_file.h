// Playable files as text.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "txsub/output/output_file.h"
#include "txsub/output/playable_file.h"

namespace korr::txsub {

inline std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// A directory of one test, gone with it.
class ScratchDirectory {
 public:
  ScratchDirectory() {
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    path_ = std::filesystem::path(testing::TempDir()) /
            (std::string(test->test_suite_name()) + '.' + test->name());
    std::filesystem::remove_all(path_);
    std::filesystem::create_directories(path_);
  }
  ~ScratchDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

/// What a file of these cues reads.
inline std::string playableText(PlayableRequest request, const std::vector<Cue>& cues) {
  const ScratchDirectory directory;
  request.path = (directory / "file").string();
  const auto file = createPlayableFile(request);
  for (const Cue& cue : cues) file->write(cue);
  file->finish();
  return readFile(request.path);
}

}  // namespace korr::txsub
