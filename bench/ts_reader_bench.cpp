// SPDX-License-Identifier: MIT

// How fast transport streams are read, without the file system under them.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <span>

#include "readers/mpegts/ts_reader.h"
#include "testkit/encoders/ts_builder.h"
#include "testkit/encoders/video_builder.h"

namespace korr::txsub {
namespace {

using encoders::Bytes;
using encoders::Pes;
using encoders::pesPacket;
using encoders::TsBuilder;
using encoders::TsProgram;
using encoders::TsStream;

constexpr std::uint16_t kVideoPid = 0x100;
constexpr std::uint16_t kTeletextPid = 0x101;
constexpr std::uint64_t kFrameTicks = 3600;

/// Pictures with captions and a PES packet of teletext each, at 10 Mbit/s. There are 16, so that
/// the continuity counters go on when the recording is repeated.
Bytes recording() {
  const TsProgram program{.pcrPid = kVideoPid,
                          .streams = {{.pid = kVideoPid, .type = TsStream::kH264},
                                      {.pid = kTeletextPid, .descriptors = {0x56, 0}}}};
  Bytes teletext(1 + 7 * 46, 0x2C);
  teletext[0] = 0x10;
  TsBuilder stream;
  stream.tables(program);
  for (std::uint64_t i = 0; i < 16; ++i) {
    const std::uint64_t pts = i * kFrameTicks;
    stream.pes(kVideoPid,
               pesPacket({.pts = pts, .unbounded = true},
                         encoders::encode({.codec = VideoCodec::H264,
                                           .triplets = encoders::textTriplets("ab"),
                                           .slices = 4,
                                           .sliceBytes = 12'000})),
               pts);
    stream.pes(kTeletextPid,
               pesPacket({.streamId = Pes::kPrivateStream1, .pts = pts, .headerDataLength = 0x24},
                         teletext));
  }
  return stream.take();
}

/// The same bytes again and again, each time a splice for the clock.
class LoopSource final : public IByteSource {
 public:
  LoopSource(std::span<const std::uint8_t> bytes, std::size_t times)
      : bytes_(bytes), left_(bytes.size() * times) {}

  std::size_t read(std::uint8_t* buffer, std::size_t size) override {
    const std::size_t count = std::min({size, left_, bytes_.size() - at_});
    std::ranges::copy(bytes_.subspan(at_, count), buffer);
    at_ = (at_ + count) % bytes_.size();
    left_ -= count;
    return count;
  }
  std::optional<std::uint64_t> size() const override { return {}; }

 private:
  std::span<const std::uint8_t> bytes_;
  std::size_t at_ = 0;
  std::size_t left_;
};

class Listener final : public IReaderListener {
 public:
  explicit Listener(std::uint32_t pid) : pid_(pid) {}

  bool onStream(const StreamInfo& stream) override { return stream.pid == pid_; }
  void onSample(const StreamInfo&, const InputSample&) override { ++samples; }

  std::size_t samples = 0;

 private:
  std::uint32_t pid_;
};

void readTransportStream(benchmark::State& state, std::uint16_t wantedPid) {
  const Bytes bytes = recording();
  constexpr std::size_t kTimes = 100;
  for (auto _ : state) {
    Listener listener(wantedPid);
    TsReader reader(std::make_unique<LoopSource>(bytes, kTimes), {});
    while (reader.read(listener)) {
    }
    if (listener.samples == 0) state.SkipWithError("no samples came out");
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kTimes * bytes.size()));
}

BENCHMARK_CAPTURE(readTransportStream, captions, kVideoPid)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readTransportStream, teletext, kTeletextPid)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace korr::txsub
