// SPDX-License-Identifier: MIT

// Small transport streams, and what a reader makes of them.
#pragma once

#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "readers/mpegts/ts_reader.h"
#include "testkit/encoders/dvb_encoder.h"
#include "testkit/encoders/ts_builder.h"
#include "testkit/encoders/video_builder.h"
#include "testkit/reader_support.h"

namespace korr::txsub::ts_test {

using encoders::Bytes;
using encoders::join;
using encoders::Pes;
using encoders::pesPacket;
using encoders::TsBuilder;
using encoders::TsProgram;
using encoders::TsStream;
using encoding::subtitling::kSecond;
using test_support::MemorySource;

inline constexpr std::uint16_t kTeletextPid = 0x34;
inline constexpr std::uint16_t kDvbPid = 0x35;
inline constexpr std::uint16_t kVideoPid = 0x100;
inline constexpr std::uint64_t kWrap = std::uint64_t{1} << 33;
inline constexpr std::uint64_t kTicks = 90'000;  // a second

inline const Bytes kTeletextDescriptor{0x56, 5, 's', 'w', 'e', 0x10, 0x88};
inline const Bytes kSubtitlingDescriptor{0x59, 8, 'f', 'r', 'a', 0x10, 0, 1, 0, 1};

inline TsProgram program() {
  return {.pcrPid = kVideoPid,
          .streams = {{.pid = kVideoPid, .type = TsStream::kH264},
                      {.pid = kTeletextPid, .descriptors = kTeletextDescriptor},
                      {.pid = kDvbPid, .descriptors = kSubtitlingDescriptor}}};
}

/// A teletext data field of `units` units, each byte of them `mark`.
inline Bytes teletextField(std::size_t units, std::uint8_t mark) {
  Bytes field{0x10};
  for (std::size_t i = 0; i < units; ++i) {
    field.insert(field.end(), {0x03, 0x2C});
    field.resize(field.size() + 44, mark);
  }
  return field;
}

/// Its PES packet, which fills whole transport packets (EN 300 472, 4.1).
inline Bytes teletextPes(std::optional<std::uint64_t> pts, std::uint8_t mark = 'a',
                         std::size_t packets = 2) {
  return pesPacket({.streamId = Pes::kPrivateStream1, .pts = pts, .headerDataLength = 0x24},
                   teletextField(packets * 4 - 1, mark));
}

inline Bytes dvbField(std::size_t segmentBytes) {
  return encoders::DvbEncoder().segment(0x13, Bytes(segmentBytes, 'd')).bytes();
}

inline Bytes dvbPes(std::uint64_t pts, const Bytes& field) {
  return pesPacket({.streamId = Pes::kPrivateStream1, .pts = pts}, field);
}

inline Bytes videoPes(std::uint64_t pts, std::string_view text) {
  return pesPacket(
      {.pts = pts, .unbounded = true},
      encoders::encode({.codec = VideoCodec::H264, .triplets = encoders::textTriplets(text)}));
}

/// The tables of `program`, and its clock at 0.
inline TsBuilder beginning() {
  return TsBuilder().tables(program()).pcr(kVideoPid, 0);
}

struct Reading : test_support::Reading<TsReader> {
  explicit Reading(const Bytes& recording, ReaderOptions options = {}, std::size_t most = SIZE_MAX)
      : test_support::Reading<TsReader>(std::make_unique<MemorySource>(recording, most), options) {}

  /// The samples of one PID.
  std::vector<InputSample> of(std::uint32_t pid) const {
    std::vector<InputSample> samples;
    for (const auto& [id, sample] : listener.samples) {
      if ((id & 0xFFFF) == pid) samples.push_back(sample);
    }
    return samples;
  }
  std::vector<double> secondsOf(std::uint32_t pid) const {
    std::vector<double> times;
    for (const auto& sample : of(pid)) times.push_back(double(sample.times->start) / kSecond);
    return times;
  }
};

}  // namespace korr::txsub::ts_test
