// SPDX-License-Identifier: MIT

// Times as WebVTT and SRT write them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>

#include "cues/cue.h"

namespace korr::txsub {

struct CueMilliseconds {
  std::uint64_t start = 0;
  std::uint64_t stop = 0;
};

/// To the nearest one.
constexpr std::uint64_t toMilliseconds(MediaTime time) {
  using encoding::subtitling::kMillisecond;
  return (time + kMillisecond / 2) / kMillisecond;
}

/// Rounded to the nearest millisecond, so that adjoining cues stay so; never of no duration.
inline CueMilliseconds cueMilliseconds(const Cue& cue) {
  const auto start = toMilliseconds(cue.start);
  return {.start = start, .stop = std::max(toMilliseconds(cue.stop), start + 1)};
}

/// "00:01:02.345" with '.', "00:01:02,345" with ','; more digits from 100 hours on.
inline std::string cueTimeText(std::uint64_t milliseconds, char separator) {
  char text[32];
  std::snprintf(text, sizeof text, "%02llu:%02llu:%02llu%c%03llu",
                static_cast<unsigned long long>(milliseconds / 3'600'000),
                static_cast<unsigned long long>(milliseconds / 60'000 % 60),
                static_cast<unsigned long long>(milliseconds / 1000 % 60), separator,
                static_cast<unsigned long long>(milliseconds % 1000));
  return text;
}

}  // namespace korr::txsub
