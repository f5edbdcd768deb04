// SPDX-License-Identifier: MIT

// Drawing subtitles into video frames.
#pragma once

#include <optional>

#include "burn/frame_buffer.h"
#include "model/interfaces.h"

namespace korr::encoding::subtitling::burn::inline v2_1 {

/// Draws subtitles into frames. Not thread-safe.
class BurnRenderer {
 public:
  virtual ~BurnRenderer() = default;

  /// Draws what the container that the renderer was made with shows at `time` into `frame` and
  /// returns the frame. A frame that says that it is untouched since this renderer drew an equal
  /// subtitle into it is left as it is. Throws "Unexpected subtitle type" for a kind that it cannot
  /// draw, and what the container throws.
  virtual FrameBuffer& draw(FrameBuffer& frame, MediaTime time) = 0;
};

/// The drawing of one kind of subtitle, and with it of whatever a container shows.
class SubtitleRenderer : public BurnRenderer {
 public:
  /// `container` is not owned; without one only `paint` may be called.
  explicit SubtitleRenderer(ISubtitleContainer* container) : container_(container) {}

  FrameBuffer& draw(FrameBuffer& frame, MediaTime time) final;

  /// Draws a given subtitle over whatever the frame holds. Throws "Unexpected subtitle type" for a
  /// kind that it cannot draw.
  virtual void paint(FrameBuffer& frame, const Subtitle& subtitle) = 0;

 private:
  /// What was drawn last, and where.
  struct Drawn {
    const std::uint32_t* memory = nullptr;
    Rectangle bounds;
    Rectangle picture;
    Subtitle subtitle;
  };

  bool isStillOn(const FrameBuffer& frame, const Subtitle& subtitle) const;

  ISubtitleContainer* container_;
  std::optional<Drawn> last_;
};

}  // namespace korr::encoding::subtitling::burn::inline v2_1
