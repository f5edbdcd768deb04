// SPDX-License-Identifier: MIT

// How fast TTML documents are made: pictures with PNG and base64, and a page of text.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

#include "timed_text/converter_to_ttml.h"
#include "util/base64.h"

namespace korr::encoding::subtitling::ttml {
namespace {

constexpr std::size_t kColours = 16;

/// Yields the same subtitle for every time, but a new picture each time it is asked.
class FixedContainer final : public ISubtitleContainer {
 public:
  explicit FixedContainer(TeletextText text) : text_(std::move(text)) {}
  explicit FixedContainer(SubtitleBitmap bitmap) : bitmap_(std::move(bitmap)) {}

  Subtitle currentSubtitle(MediaTime) override {
    ++bitmap_.pageState;
    return bitmap_.visible != 0 ? Subtitle(bitmap_) : Subtitle(text_);
  }

 private:
  TeletextText text_;
  SubtitleBitmap bitmap_;
};

// White at the heart of a stroke, a black edge around it, in sixteen steps.
std::array<std::uint8_t, 4> colourAt(double distance, double stroke) {
  if (distance > 2 * stroke) return {};
  const double level = std::clamp(1.5 - distance / stroke, 0.0, 1.0);
  const auto step = static_cast<std::uint8_t>(std::lround(level * (kColours - 2)));
  const auto grey = static_cast<std::uint8_t>(step * 255 / (kColours - 2));
  return {grey, grey, grey, 255};
}

// A figure of a stem and an arc, the same for the same letter.
void drawLetter(PixelBuffer& pixels, std::uint32_t displayWidth, std::uint32_t left,
                std::uint32_t top, std::uint32_t height, char letter) {
  std::mt19937 random{static_cast<unsigned char>(letter)};
  const double width = height * 0.4;
  const double stroke = height * 0.07;
  const double slant = std::uniform_real_distribution(-0.3, 0.3)(random);
  const double radius = std::uniform_real_distribution(0.1, 0.2)(random) * height;
  const double middle = std::uniform_real_distribution(0.3, 0.7)(random) * height;
  for (std::uint32_t y = 0; y < height; ++y) {
    for (std::uint32_t x = 0; x < static_cast<std::uint32_t>(width); ++x) {
      const double stem = std::abs(x - width * (0.3 + slant * y / height));
      const double arc = std::abs(std::hypot(x - width / 2, y - middle) - radius);
      const auto colour = colourAt(std::min(stem, arc), stroke);
      std::copy(colour.begin(), colour.end(),
                pixels.data() + (std::size_t{top + y} * displayWidth + left + x) * 4);
    }
  }
}

/// Two lines of text near the bottom of the display.
SubtitleBitmap page(std::uint32_t width, std::uint32_t height) {
  constexpr std::array<std::string_view, 2> kLines = {"The tide will turn at half past nine,",
                                                      "and we shall be home before the rain."};
  auto pixels = std::make_shared<PixelBuffer>(width, height);
  const std::uint32_t letterHeight = height / 22;
  const std::uint32_t advance = letterHeight * 2 / 5;
  std::uint32_t top = height - 4 * letterHeight;
  pixels->addPaintedRows({top, top + 2 * letterHeight + letterHeight / 2});
  for (const std::string_view line : kLines) {
    auto left = (width - static_cast<std::uint32_t>(line.size()) * advance) / 2;
    for (const char letter : line) {
      if (letter != ' ') drawLetter(*pixels, width, left, top, letterHeight, letter);
      left += advance;
    }
    top += letterHeight * 3 / 2;
  }
  SubtitleBitmap bitmap;
  bitmap.visible = 1;
  bitmap.width = width;
  bitmap.height = height;
  bitmap.pixels = std::move(pixels);
  return bitmap;
}

TeletextText text() {
  TeletextText page;
  for (const std::int32_t number : {20, 22}) {
    std::vector<GlyphText> glyphs;
    for (const char c : std::string_view("  A line of a subtitle, as it is.  ")) {
      glyphs.emplace_back(c);
    }
    page.rows.push_back({.number = number, .runs = {{.glyphs = std::move(glyphs)}}});
  }
  return page;
}

void convert(benchmark::State& state, FixedContainer container) {
  ConverterToTtml converter(container, false, createPngEncoder());
  ByteBuffer document;
  for (auto _ : state) converter.convert(document, 0);
  state.counters["bytes"] = static_cast<double>(document.size());
}

BENCHMARK_CAPTURE(convert, picture720x576, FixedContainer(page(720, 576)))
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(convert, picture1920x1080, FixedContainer(page(1920, 1080)))
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(convert, text, FixedContainer(text()))->Unit(benchmark::kMicrosecond);

void base64(benchmark::State& state) {
  const ByteBuffer bytes(static_cast<std::size_t>(state.range(0)), 0x5A);
  for (auto _ : state) benchmark::DoNotOptimize(util::encodeBase64(bytes));
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(base64)->Arg(4'200);

}  // namespace
}  // namespace korr::encoding::subtitling::ttml
