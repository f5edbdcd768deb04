// SPDX-License-Identifier: MIT

// Writes the samples into a folder: make_samples FOLDER
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "samples/samples.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: make_samples FOLDER\n");
    return 2;
  }
  for (const auto& sample : korr::samples::sampleFiles()) {
    const auto path = std::filesystem::path(argv[1]) / sample.name;
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(sample.bytes.data()),
               static_cast<std::streamsize>(sample.bytes.size()));
    file.close();
    if (!file) {
      std::fprintf(stderr, "make_samples: cannot write %s\n", path.string().c_str());
      return 1;
    }
  }
  return 0;
}
