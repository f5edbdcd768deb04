// How fast teletext packets pass the parser: those of other magazines and pages, and those shown.
#include <benchmark/benchmark.h>

#include "teletext/teletext_parser.h"
#include "testkit/encoders/teletext_encoder.h"

namespace korr::encoding::subtitling::teletext::lib_teletext {
namespace {

constexpr std::uint32_t kPage = 0x888;

/// Feeds a page of 24 rows that comes again and again.
void parsePage(benchmark::State& state, std::uint32_t page) {
  constexpr std::uint32_t kRows = 24;
  std::vector<encoders::TeletextPacket> packets{encoders::headerPacket({.page = page})};
  for (std::uint32_t row = 1; row <= kRows; ++row) {
    packets.push_back(
        encoders::rowPacket(page, row, "\x0D\v\vTwo colours \x03in a row of text\n\n"));
  }
  const auto field = encoders::teletextDataField(packets);
  TeletextParser parser(kPage, 0);
  MediaTime time = 0;
  for (auto _ : state) {
    parser.parse(field.data(), static_cast<std::int64_t>(field.size()), ++time, true);
    benchmark::DoNotOptimize(parser.hasChanged());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(field.size()));
}

BENCHMARK_CAPTURE(parsePage, otherMagazine, 0x188);
BENCHMARK_CAPTURE(parsePage, otherPage, 0x887);
BENCHMARK_CAPTURE(parsePage, followedPage, kPage);

}  // namespace
}  // namespace korr::encoding::subtitling::teletext::lib_teletext
