// SPDX-License-Identifier: MIT

// A caption screen into a high-definition frame.
#include <benchmark/benchmark.h>

#include <vector>

#include "burn/closed_captions_renderer.h"
#include "burn/text_drawing.h"
#include "model/interfaces.h"

namespace {

using namespace korr::encoding::subtitling;

class FourFullRows final : public ISubtitleContainer {
 public:
  Subtitle currentSubtitle(MediaTime) override {
    CaptionText text;
    for (std::int32_t row = 12; row <= 15; ++row) {
      CaptionText::TextRun run;
      for (int i = 0; i < 32; ++i) run.glyphs.emplace_back(static_cast<char>('A' + (i + row) % 57));
      text.rows.push_back({{run}, CaptionMode::PopOn, row});
    }
    return Subtitle(std::move(text));
  }
};

// `state.range(0)`: whether each frame is a new picture.
void drawCaptions(benchmark::State& state) {
  FourFullRows container;
  burn::TextDrawing drawing(burn::createGlyphRasteriser());
  closed_caption::ClosedCaptionsRenderer renderer(container, drawing);
  std::vector<std::uint32_t> pixels(1920 * 1080);
  burn::FrameBuffer frame(pixels, 1920, 1080);
  frame.isUntouched = state.range(0) == 0;
  for (auto _ : state) {
    renderer.draw(frame, 0);
    benchmark::DoNotOptimize(pixels.data());
  }
}

BENCHMARK(drawCaptions)->ArgName("newPicture")->Arg(1)->Arg(0)->Unit(benchmark::kMicrosecond);

}  // namespace
