// SPDX-License-Identifier: MIT

// How much a service shows.
#pragma once

#include <cstdint>

#include "cues/cue.h"

namespace korr::txsub {

struct CueTally {
  std::uint64_t cues = 0;
  MediaTime first = 0;  ///< start of the first cue, 100 ns
  MediaTime last = 0;   ///< stop of the last one
  MediaTime shown = 0;  ///< sum of all

  void add(const Cue& cue) {
    if (cues++ == 0) first = cue.start;
    last = cue.stop;
    shown += cue.stop - cue.start;
  }
};

}  // namespace korr::txsub
