#include "files/frames/subtitle_painter.h"

#include <algorithm>

#include "burn/bitmap_renderer.h"
#include "burn/closed_captions_renderer.h"
#include "burn/teletext_renderer.h"
#include "burn/text_drawing.h"
#include "model/interfaces.h"
#include "util/exception.h"

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

// Yields one subtitle at all times.
class OneSubtitle final : public subtitling::ISubtitleContainer {
 public:
  void set(std::shared_ptr<const Subtitle> subtitle) { subtitle_ = std::move(subtitle); }

  Subtitle currentSubtitle(subtitling::MediaTime) override {
    if (const auto* text = subtitle_->captionText()) return Subtitle(withRunsInARow(*text));
    if (const auto* text = subtitle_->teletextText()) return Subtitle(*text);
    if (const auto* bitmap = subtitle_->bitmap()) return Subtitle(*bitmap);
    throw util::TessaryException("internal assertion failure");
  }

 private:
  std::shared_ptr<const Subtitle> subtitle_;
};

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
  explicit Parts(SubtitleInputType type) : drawing(subtitling::burn::createGlyphRasteriser()) {
    using subtitling::closed_caption::ClosedCaptionsRenderer;
    using subtitling::teletext::lib_teletext::TeletextRenderer;
    switch (type) {
      case SubtitleInputType::ClosedCaption:
        renderer = std::make_unique<ClosedCaptionsRenderer>(container, drawing);
        break;
      case SubtitleInputType::Teletext:
        renderer = std::make_unique<TeletextRenderer>(container, drawing);
        break;
      case SubtitleInputType::DvbSubtitle:
        renderer = std::make_unique<subtitling::burn::BitmapRenderer>(container);
        break;
    }
  }

  OneSubtitle container;
  subtitling::burn::TextDrawing drawing;
  std::unique_ptr<subtitling::burn::BurnRenderer> renderer;
};

SubtitlePainter::SubtitlePainter(SubtitleInputType type) : parts_(std::make_unique<Parts>(type)) {
}

SubtitlePainter::~SubtitlePainter() = default;

void SubtitlePainter::paint(Frame& frame, std::shared_ptr<const Subtitle> subtitle) {
  parts_->container.set(std::move(subtitle));
  subtitling::burn::FrameBuffer buffer(frame.pixels, frame.width, frame.height);
  buffer.generation = ++paintings_;
  parts_->renderer->draw(buffer, 0);
}

}  // namespace korr::txsub
