// SPDX-License-Identifier: MIT
#include "bench/video_stream.h"

#include "testkit/encoders/video_builder.h"

namespace korr::bench {
namespace {

using encoders::captionSeiMessage;
using encoders::join;
using encoders::pesPacket;
using encoders::seiUnit;
using encoders::TsBuilder;

constexpr std::size_t kGroup = 15;  // pictures

/// Where the picture that is coded as `coded`-th is shown: I P B B P B B ...
std::size_t shownAt(std::size_t coded) {
  if (coded == 0) return 0;
  const std::size_t place = (coded - 1) % 3;
  const std::size_t group = (coded - 1) / 3;
  return group * 3 + (place == 0 ? 3 : place);
}

}  // namespace

bool VideoStream::nextBeginsGroup() const {
  return coded_ == 0 || coded_ % kGroup == 1;  // in the place of a P picture
}

void VideoStream::addPicture(TsBuilder& stream) {
  const bool idr = nextBeginsGroup();
  const std::size_t shown = shownAt(coded_);
  const std::size_t tenths = idr ? 40 : coded_ % 3 == 1 ? 11 : 6;  // of the average
  const std::uint64_t dts = nextDts();
  const std::uint64_t pts = kFirstDts + (shown + 1) * kFrameTicks;
  const Bytes bytes = picture(shown, idr, pictureBytes_ * tenths / 10);
  constexpr std::uint64_t kDelay = 9'000;  // from PCR to DTS
  stream.pes(pid_, pesPacket({.pts = pts, .dts = dts, .unbounded = true}, bytes), dts - kDelay);
  ++coded_;
}

Bytes VideoStream::picture(std::size_t shown, bool idr, std::size_t size) {
  constexpr std::size_t kSlices = 4;
  Bytes bytes{0, 0, 0, 1, 0x09, 0xF0};
  if (idr) bytes = join({bytes, encoders::h264ParameterSets()});
  if (captions_) {
    bytes = join({bytes, seiUnit(txsub::VideoCodec::H264, captionSeiMessage(captions_(shown)))});
  }
  for (std::size_t i = 0; i < kSlices; ++i) {
    const std::uint8_t firstByte = i == 0 ? 0x88 : 0x48;  // first_mb_in_slice 0, or not
    const auto header = static_cast<std::uint8_t>(idr ? 0x65 : 0x41);
    bytes.insert(bytes.end(), {0, 0, 1, header, firstByte});
    const auto body = noise_.take(size / kSlices);
    bytes.insert(bytes.end(), body.begin(), body.end());
  }
  return bytes;
}

void writeStream(std::ostream& file, std::size_t size,
                 const std::function<void(TsBuilder& stream)>& addMore) {
  TsBuilder stream;
  for (std::size_t written = 0; written < size;) {
    addMore(stream);
    const Bytes packets = stream.take();
    file.write(reinterpret_cast<const char*>(packets.data()),
               static_cast<std::streamsize>(packets.size()));
    written += packets.size();
  }
}

}  // namespace korr::bench
