// Drawing subtitles into video frames.
#pragma once

#include <optional>

#include "burn/frame_buffer.h"
#include "model/media_time.h"
#include "model/subtitle.h"

namespace korr::encoding::subtitling::burn::inline v2_1 {

/// Draws the subtitle of a container, which it does not own. Not thread-safe.
class BurnRenderer {
 public:
  virtual ~BurnRenderer() = default;

  /// Draws the subtitle current at `time` into `frame` and returns the frame. A frame that it drew
  /// last, of the same generation and with an equal subtitle, is left as it is. Throws "Unexpected
  /// subtitle type" for a kind that it cannot draw, and what the container throws.
  virtual FrameBuffer& draw(FrameBuffer& frame, MediaTime time) = 0;
};

/// What a renderer drew last, and where.
class LastDrawing {
 public:
  bool isStillOn(const FrameBuffer& frame, const Subtitle& subtitle) const;
  void remember(const FrameBuffer& frame, Subtitle subtitle);

 private:
  const std::uint32_t* memory_ = nullptr;
  std::uint64_t generation_ = 0;
  Rectangle bounds_;
  Rectangle picture_;
  std::optional<Subtitle> subtitle_;
};

}  // namespace korr::encoding::subtitling::burn::inline v2_1
