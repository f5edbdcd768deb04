// SPDX-License-Identifier: MIT

// Any bytes as video: whatever comes out is whole triplets, and the same however the bytes are cut.
#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

#include "readers/video/video_captions.h"

namespace {

using namespace korr::txsub;
using Samples = std::vector<std::pair<MediaTime, std::vector<std::uint8_t>>>;

/// Extracts with a PES packet every 188 bytes and the bytes fed in pieces.
Samples extract(VideoCodec codec, std::span<const std::uint8_t> bytes, std::size_t piece) {
  constexpr std::size_t kPesBytes = 188;
  constexpr MediaTime kFrame = 333'667;
  Samples samples;
  VideoCaptionExtractor extractor(codec,
                                  [&](MediaTime time, std::span<const std::uint8_t> triplets) {
                                    if (triplets.empty() || triplets.size() % kTripletBytes != 0)
                                      std::abort();
                                    samples.emplace_back(
                                        time, std::vector(triplets.begin(), triplets.end()));
                                  },
                                  {});
  for (std::size_t pes = 0; pes < bytes.size(); pes += kPesBytes) {
    const auto payload = bytes.subspan(pes, std::min(kPesBytes, bytes.size() - pes));
    const bool hasPts = payload.front() % 4 != 0;
    if (hasPts) extractor.beginPes((pes / kPesBytes + payload.front() % 5) * kFrame);
    for (std::size_t at = 0; at < payload.size(); at += piece) {
      extractor.feed(payload.subspan(at, std::min(piece, payload.size() - at)));
    }
  }
  extractor.flush();
  return samples;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const auto codec = static_cast<VideoCodec>(data[0] % 3);
  const std::size_t piece = data[1] % 64 + 1U;
  const std::span bytes(data + 2, size - 2);
  if (extract(codec, bytes, piece) != extract(codec, bytes, SIZE_MAX)) std::abort();
  return 0;
}
