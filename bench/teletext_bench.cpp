// SPDX-License-Identifier: MIT

// How fast teletext packets pass the parser and the decoder: those of other magazines and pages,
// and those shown.
#include <benchmark/benchmark.h>

#include <array>
#include <string_view>

#include "teletext/teletext_display_decoder.h"
#include "teletext/teletext_parser.h"
#include "testkit/encoders/teletext_encoder.h"

namespace korr::encoding::subtitling::teletext::lib_teletext {
namespace {

constexpr std::uint32_t kPage = 0x888;

/// A page of 24 rows.
std::vector<std::uint8_t> pageField(std::uint32_t page, std::string_view text) {
  constexpr std::uint32_t kRows = 24;
  std::vector<encoders::TeletextPacket> packets{encoders::headerPacket({.page = page})};
  for (std::uint32_t row = 1; row <= kRows; ++row) {
    packets.push_back(encoders::rowPacket(page, row, text));
  }
  return encoders::teletextDataField(packets);
}

constexpr std::string_view kText = "\x0C\v\vTwo colours \x03in a row of text\n\n";
constexpr std::string_view kOtherText = "\x0C\v\vTwo colours \x06in another row\n\n";

/// Feeds a page that comes again and again.
void parsePage(benchmark::State& state, std::uint32_t page) {
  const auto field = pageField(page, kText);
  TeletextParser parser(kPage, 0);
  MediaTime time = 0;
  for (auto _ : state) {
    parser.parse(field.data(), static_cast<std::int64_t>(field.size()), ++time, true);
    benchmark::DoNotOptimize(parser.hasChanged());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(field.size()));
}

/// The filter's parser and the receiver's decoder on two pages in turn, so that each is shown.
void parseChanges(benchmark::State& state) {
  const std::array fields = {pageField(kPage, kText), pageField(kPage, kOtherText)};
  TeletextParser parser(kPage, 0);
  MediaTime time = 0;
  for (auto _ : state) {
    const auto& field = fields[++time % 2];
    parser.parse(field.data(), static_cast<std::int64_t>(field.size()), time, true);
    if (parser.hasChanged()) benchmark::DoNotOptimize(parser.currentSubtitle(time));
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(fields[0].size()));
}

class Discard final : public IDisplayListener {
 public:
  void onDisplay(MediaTime, Subtitle subtitle) override { benchmark::DoNotOptimize(subtitle); }
};

void displayPages(benchmark::State& state, std::uint32_t page, std::string_view secondText) {
  const std::array fields = {pageField(page, kText), pageField(page, secondText)};
  Discard discard;
  TeletextDisplayDecoder decoder(kPage, 0, true, discard, nullptr);
  MediaTime time = 0;
  for (auto _ : state) {
    ++time;
    decoder.decode(fields[time % 2], time);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(fields[0].size()));
}

BENCHMARK_CAPTURE(displayPages, otherMagazine, 0x188, kText);
BENCHMARK_CAPTURE(displayPages, otherPage, 0x887, kText);
BENCHMARK_CAPTURE(displayPages, followedPage, kPage, kText);
BENCHMARK_CAPTURE(displayPages, changes, kPage, kOtherText);
BENCHMARK(parseChanges);
BENCHMARK_CAPTURE(parsePage, otherMagazine, 0x188);
BENCHMARK_CAPTURE(parsePage, otherPage, 0x887);
BENCHMARK_CAPTURE(parsePage, followedPage, kPage);

}  // namespace
}  // namespace korr::encoding::subtitling::teletext::lib_teletext
