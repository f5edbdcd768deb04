// SPDX-License-Identifier: MIT

// Caption triplets as an input sample.
#pragma once

#include <cstdint>
#include <span>

#include "readers/media_reader.h"

namespace korr::txsub {

/// The sample of one picture's cc_data triplets; each is a whole unit. `stop` is the end of the
/// picture where its duration is known, else the same as `start`.
inline InputSample captionSample(std::span<const std::uint8_t> triplets, MediaTime start,
                                 MediaTime stop) {
  InputSample sample;
  sample.data.assign(triplets.begin(), triplets.end());
  sample.times = InputSample::Times{start, stop};
  sample.sync = true;
  return sample;
}

}  // namespace korr::txsub
