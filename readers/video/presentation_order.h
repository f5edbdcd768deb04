// SPDX-License-Identifier: MIT

// From the order in which pictures are decoded to the order in which they are shown.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "model/media_time.h"

namespace korr::txsub {

using encoding::subtitling::MediaTime;

/// Takes the cc_data triplets of one picture and its presentation time.
using CaptionListener = std::function<void(MediaTime, std::span<const std::uint8_t> triplets)>;

/// Puts the captions of pictures into presentation order. Holds back as many pictures as a decoder
/// may (H.264, A.3: at most 16 frames), so it needs no decoding times and trusts none. Triplets of
/// one time become one sample; pictures without captions make none.
class PresentationOrder {
 public:
  explicit PresentationOrder(CaptionListener listener) : listener_(std::move(listener)) {}

  /// One picture, in decoding order, with its captions if it has any.
  void push(MediaTime time, std::span<const std::uint8_t> triplets);

  /// Hands out what is shown at `now` or before: nothing earlier will come.
  void release(MediaTime now);

  /// Hands out all that is held back.
  void flush();

 private:
  struct Picture {
    MediaTime time = 0;
    std::vector<std::uint8_t> triplets;
  };

  void deliver(const Picture& picture);

  CaptionListener listener_;
  std::vector<Picture> held_;  // by time
  MediaTime lastTime_ = 0;     // of the picture pushed last
};

}  // namespace korr::txsub
