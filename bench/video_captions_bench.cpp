// SPDX-License-Identifier: MIT

// How fast captions are found in video, without the container around it.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>

#include "readers/video/video_captions.h"
#include "testkit/encoders/video_builder.h"

namespace korr::txsub {
namespace {

using encoders::Bytes;

/// A picture with captions whose slices hold noise, as real ones do.
Bytes picture(VideoCodec codec, std::size_t slices, std::size_t sliceBytes) {
  Bytes bytes = encode(encoders::Picture{.codec = codec,
                                         .triplets = encoders::textTriplets("ab"),
                                         .slices = slices,
                                         .sliceBytes = sliceBytes});
  std::mt19937 random{1};
  for (auto& byte : bytes) {
    if (byte == 0x55) byte = static_cast<std::uint8_t>(random() % 255 + 1);
  }
  return bytes;
}

/// Argument: how many bytes are fed at once.
void extractCaptions(benchmark::State& state, VideoCodec codec, std::size_t slices) {
  const Bytes bytes = picture(codec, slices, 42'000 / slices);
  const auto piece = static_cast<std::size_t>(state.range(0));
  std::size_t samples = 0;
  VideoCaptionExtractor extractor(codec, [&](MediaTime, auto) { ++samples; }, {});
  MediaTime pts = 0;
  for (auto _ : state) {
    extractor.beginPes(pts += 333'667);
    for (std::size_t at = 0; at < bytes.size(); at += piece) {
      extractor.feed(std::span(bytes).subspan(at, std::min(piece, bytes.size() - at)));
    }
  }
  extractor.flush();
  if (samples == 0) state.SkipWithError("no captions came out");
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
}

BENCHMARK_CAPTURE(extractCaptions, h264, VideoCodec::H264, 4)->Arg(184)->Arg(65'536);
BENCHMARK_CAPTURE(extractCaptions, hevc, VideoCodec::Hevc, 1)->Arg(184);
BENCHMARK_CAPTURE(extractCaptions, mpeg2, VideoCodec::Mpeg2, 68)->Arg(184);

}  // namespace
}  // namespace korr::txsub
