// SPDX-License-Identifier: MIT

// How fast pages of DVB subtitles are parsed and painted, and made TTML documents.
#include <benchmark/benchmark.h>

#include "bench/dvb_inputs.h"
#include "dvb_subtitle/dvb_display_decoder.h"
#include "dvb_subtitle/dvb_subtitle_parser.h"
#include "timed_text/converter_to_ttml.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle {
namespace {

struct Lines {
  const char* upper;
  const char* lower;
};

// The glyphs are large and their edges soft, which takes more bytes than fonts of broadcasters do:
// there, two lines of thirty characters are some 7,000 bytes, and so are these. The full lines are
// more than half as much again.
constexpr Lines kTypical{"THE TIDE WILL TURN,", "WE SHALL BE LATE."};
constexpr Lines kFull{"THE TIDE WILL TURN AT NINE,", "AND WE SHALL BE LATE HOME."};

// Pages two seconds apart, as in a stream: the history lets go of old ones.
class Pages {
 public:
  Pages(const benchmark::State& state, const Lines& lines)
      : field_(bench::dvbPage(static_cast<std::uint32_t>(state.range(0)),
                              static_cast<std::uint32_t>(state.range(1)), lines.upper,
                              lines.lower)) {}

  void parseNext() {
    time_ += 2 * kSecond;
    parser_.parse(field_.data(), static_cast<std::int64_t>(field_.size()), time_, true);
  }

  DVBSubtitleParser& parser() { return parser_; }
  MediaTime time() const { return time_; }
  std::size_t bytes() const { return field_.size(); }

 private:
  std::vector<std::uint8_t> field_;
  DVBSubtitleParser parser_{nullptr};
  MediaTime time_ = 0;
};

void dvbPage(benchmark::State& state, const Lines& lines) {
  Pages pages(state, lines);
  for (auto _ : state) pages.parseNext();
  state.counters["bytes"] = static_cast<double>(pages.bytes());
}
BENCHMARK_CAPTURE(dvbPage, typical, kTypical)
    ->Args({720, 576})
    ->Args({1920, 1080})
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(dvbPage, full, kFull)
    ->Args({720, 576})
    ->Args({1920, 1080})
    ->Unit(benchmark::kMicrosecond);

// The same as a receiver shows them.
class Nothing final : public IDisplayListener {
 public:
  void onDisplay(MediaTime, Subtitle subtitle) override { benchmark::DoNotOptimize(subtitle); }
};

void dvbDisplay(benchmark::State& state, const Lines& lines) {
  const auto field =
      bench::dvbPage(static_cast<std::uint32_t>(state.range(0)),
                     static_cast<std::uint32_t>(state.range(1)), lines.upper, lines.lower);
  Nothing listener;
  DvbDisplayDecoder decoder({}, listener, nullptr);
  MediaTime time = 0;
  for (auto _ : state) decoder.decode(field, time += 2 * kSecond);
}
BENCHMARK_CAPTURE(dvbDisplay, typical, kTypical)
    ->Args({720, 576})
    ->Args({1920, 1080})
    ->Unit(benchmark::kMicrosecond);

void dvbPageToTtml(benchmark::State& state, const Lines& lines) {
  Pages pages(state, lines);
  ttml::ConverterToTtml converter(pages.parser(), false, ttml::createPngEncoder());
  ByteBuffer document;
  for (auto _ : state) {
    pages.parseNext();
    converter.convert(document, pages.time());
  }
  state.counters["bytes"] = static_cast<double>(document.size());
}
BENCHMARK_CAPTURE(dvbPageToTtml, typical, kTypical)
    ->Args({720, 576})
    ->Args({1920, 1080})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(dvbPageToTtml, full, kFull)
    ->Args({720, 576})
    ->Args({1920, 1080})
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle
