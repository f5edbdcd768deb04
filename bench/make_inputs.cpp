// SPDX-License-Identifier: MIT

// Writes the recordings that run.sh measures, those that are not there yet: make_inputs FOLDER
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "bench/caption_inputs.h"
#include "bench/dvb_inputs.h"
#include "bench/teletext_inputs.h"

namespace {

/// Under another name until it is whole.
bool write(const korr::bench::Input& input, const std::filesystem::path& path) {
  const std::filesystem::path unfinished = path.string() + ".part";
  std::ofstream file(unfinished, std::ios::binary);
  input.write(file);
  file.close();
  if (!file) return false;
  std::filesystem::rename(unfinished, path);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: make_inputs FOLDER\n");
    return 2;
  }
  const std::filesystem::path folder = argv[1];
  std::filesystem::create_directories(folder);
  for (const auto& inputs :
       {korr::bench::captionInputs(), korr::bench::dvbInputs(), korr::bench::teletextInputs()}) {
    for (const auto& input : inputs) {
      const auto path = folder / input.name;
      if (std::filesystem::exists(path) || write(input, path)) continue;
      std::fprintf(stderr, "make_inputs: cannot write %s\n", path.string().c_str());
      return 1;
    }
  }
  return 0;
}
