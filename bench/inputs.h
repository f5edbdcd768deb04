// SPDX-License-Identifier: MIT

// The recordings that run.sh measures.
#pragma once

#include <functional>
#include <ostream>
#include <string>

namespace korr::bench {

inline constexpr std::size_t kMegabyte = 1'000'000;

struct Input {
  std::string name;
  std::function<void(std::ostream& file)> write;
};

}  // namespace korr::bench
