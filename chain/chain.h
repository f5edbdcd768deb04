// SPDX-License-Identifier: MIT

// What every chain looks like to its host.
#pragma once

#include "chain/chain_counters.h"
#include "framing/nal.h"
#include "model/media_time.h"

namespace korr::encoding::subtitling::inline v2_1 {

/// Push the samples of one input into `framer()`, and what the chain makes of them comes out of
/// whatever it was made with. Not thread-safe.
class IChain {
 public:
  virtual ~IChain() = default;

  virtual packaging::lib_parse_es::NALBuilder& framer() = 0;

  /// Live, `until` has passed: what began before it and waits for more is shown as it is.
  virtual void settle(MediaTime until) { (void)until; }

  /// The input has ended at `end`, and the framer has passed on its last unit.
  virtual void finish(MediaTime end) = 0;

  virtual ChainCounters counters() const = 0;
};

}  // namespace korr::encoding::subtitling::inline v2_1
