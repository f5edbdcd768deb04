// SPDX-License-Identifier: MIT

// Captions as an encoder sends them: one byte pair a frame and field.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "testkit/encoders/caption_builder.h"

namespace korr::samples {

using Bytes = std::vector<std::uint8_t>;

/// The byte pairs of line 21 from frame 0 on, at 29.97 frames a second.
class Line21 {
 public:
  /// Sends the pairs of `caption` from `frame` on, or when its field is free.
  Line21& at(std::size_t frame, encoders::CaptionBuilder& caption);

  /// The cc_data triplets of a frame: field 1, field 2. Null pairs where nothing is sent.
  Bytes triplets(std::size_t frame) const;

 private:
  std::array<std::vector<Bytes>, 2> fields_;  // the triplet of each frame; empty: nothing
};

}  // namespace korr::samples
