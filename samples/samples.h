// SPDX-License-Identifier: MIT

// The recordings that are shipped in this folder.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace korr::samples {

struct SampleFile {
  std::string name;
  std::vector<std::uint8_t> bytes;
};

/// Every sample, made anew.
std::vector<SampleFile> sampleFiles();

}  // namespace korr::samples
