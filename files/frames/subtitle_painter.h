// SPDX-License-Identifier: MIT

// One subtitle on one frame, whatever its kind.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "model/modes.h"
#include "model/subtitle.h"

namespace korr::txsub {

/// A frame of the program's own.
struct Frame {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint32_t> pixels;  ///< premultiplied 0xAARRGGBB, rows top to bottom

  Frame(std::uint32_t frameWidth, std::uint32_t frameHeight)
      : width(frameWidth), height(frameHeight), pixels(std::size_t{width} * height) {}

  /// The pixels as bytes R, G, B, A, not premultiplied.
  std::vector<std::uint8_t> rgba() const;
};

/// Draws with the burn-in renderer of one subtitle system.
class SubtitlePainter {
 public:
  explicit SubtitlePainter(encoding::subtitling::SubtitleInputType type);
  ~SubtitlePainter();
  SubtitlePainter(const SubtitlePainter&) = delete;
  SubtitlePainter& operator=(const SubtitlePainter&) = delete;

  /// Draws over what the frame holds.
  void paint(Frame& frame, const encoding::subtitling::Subtitle& subtitle);

 private:
  struct Parts;

  std::unique_ptr<Parts> parts_;
};

}  // namespace korr::txsub
