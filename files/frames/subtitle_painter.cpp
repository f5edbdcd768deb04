// SPDX-License-Identifier: MIT
#include "files/frames/subtitle_painter.h"

#include <algorithm>
#include <optional>

#include "burn/bitmap_renderer.h"
#include "burn/closed_captions_renderer.h"
#include "burn/teletext_renderer.h"
#include "burn/text_drawing.h"
#include "burn/window_renderer.h"

namespace korr::txsub {

namespace {

namespace subtitling = encoding::subtitling;
using subtitling::CaptionText;
using subtitling::Subtitle;
using subtitling::SubtitleInputType;

// The decoder leaves a run that a style change opened at the column of the run before it; on screen
// it follows that run's text.
CaptionText withRunsInARow(CaptionText text) {
  for (auto& row : text.rows) {
    std::uint32_t end = 0;
    for (auto& run : row.runs) {
      run.column = std::max(run.column, end);
      end = run.column + static_cast<std::uint32_t>(run.glyphs.size());
    }
  }
  return text;
}

}  // namespace

std::vector<std::uint8_t> Frame::rgba() const {
  std::vector<std::uint8_t> bytes;
  bytes.reserve(pixels.size() * 4);
  for (const auto word : pixels) {
    const auto colour = subtitling::burn::unpremultiply(word);
    for (const unsigned shift : {16u, 8u, 0u, 24u})
      bytes.push_back(static_cast<std::uint8_t>(colour >> shift));
  }
  return bytes;
}

struct SubtitlePainter::Parts {
  explicit Parts(SubtitleInputType type) {
    using subtitling::closed_caption::ClosedCaptionsRenderer;
    using subtitling::teletext::lib_teletext::TeletextRenderer;
    if (type == SubtitleInputType::DvbSubtitle) {
      renderer = std::make_unique<subtitling::burn::BitmapRenderer>();
      return;
    }
    drawing.emplace(subtitling::burn::createGlyphRasteriser());
    if (type == SubtitleInputType::ClosedCaption) {
      renderer = std::make_unique<ClosedCaptionsRenderer>(*drawing);
    } else {
      renderer = std::make_unique<TeletextRenderer>(*drawing);
    }
  }

  std::optional<subtitling::burn::TextDrawing> drawing;  // pictures need no letters
  std::unique_ptr<subtitling::burn::SubtitleRenderer> renderer;
};

SubtitlePainter::SubtitlePainter(SubtitleInputType type) : parts_(std::make_unique<Parts>(type)) {
}

SubtitlePainter::~SubtitlePainter() = default;

void SubtitlePainter::paint(Frame& frame, const Subtitle& subtitle) {
  subtitling::burn::FrameBuffer buffer(frame.pixels, frame.width, frame.height);
  if (const auto* windows = subtitle.windowText(); windows && parts_->drawing) {
    subtitling::burn::WindowRenderer(*parts_->drawing).paint(buffer, *windows);
  } else if (const auto* text = subtitle.captionText()) {
    parts_->renderer->paint(buffer, Subtitle(withRunsInARow(*text)));
  } else {
    parts_->renderer->paint(buffer, subtitle);
  }
}

}  // namespace korr::txsub
