// How fast pages of DVB subtitles are parsed and painted, and made TTML documents.
#include <benchmark/benchmark.h>

#include "bench/dvb_inputs.h"
#include "dvb_subtitle/dvb_subtitle_parser.h"
#include "timed_text/converter_to_ttml.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle {
namespace {

constexpr const char* kUpper = "THE TIDE WILL TURN,";
constexpr const char* kLower = "WE SHALL BE LATE.";

// Pages two seconds apart, as in a stream: the history lets go of old ones.
class Pages {
 public:
  explicit Pages(const benchmark::State& state)
      : field_(bench::dvbPage(static_cast<std::uint32_t>(state.range(0)),
                              static_cast<std::uint32_t>(state.range(1)), kUpper, kLower)) {}

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

void dvbPage(benchmark::State& state) {
  Pages pages(state);
  for (auto _ : state) pages.parseNext();
  state.counters["bytes"] = static_cast<double>(pages.bytes());
}
BENCHMARK(dvbPage)->Args({720, 576})->Args({1920, 1080})->Unit(benchmark::kMicrosecond);

void dvbPageToTtml(benchmark::State& state) {
  Pages pages(state);
  ttml::ConverterToTtml converter(pages.parser(), false, ttml::createPngEncoder());
  ByteBuffer document;
  for (auto _ : state) {
    pages.parseNext();
    converter.convert(document, pages.time());
  }
  state.counters["bytes"] = static_cast<double>(document.size());
}
BENCHMARK(dvbPageToTtml)->Args({720, 576})->Args({1920, 1080})->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle
