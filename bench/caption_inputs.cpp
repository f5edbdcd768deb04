// SPDX-License-Identifier: MIT
#include "bench/caption_inputs.h"

#include <array>

#include "bench/video_stream.h"
#include "samples/line21.h"
#include "testkit/encoders/caption_builder.h"

namespace korr::bench {
namespace {

using encoders::CaptionBuilder;
using encoders::pesPacket;
using encoders::TsBuilder;
using encoders::TsProgram;
using encoders::TsStream;
using samples::Line21;

constexpr std::size_t kFramesPerSecond = VideoStream::kFramesPerSecond;

/// Captions without a pause: a pop-on caption every two seconds in field 1, roll-up in field 2.
Line21 endlessCaptions(std::size_t frames) {
  constexpr std::array<const char*, 4> kLines{"The ferry leaves at seven,", "not a minute later.",
                                              "Whoever comes late,", "stays on the island."};
  Line21 line;
  for (std::size_t second = 0; second * kFramesPerSecond < frames; second += 2) {
    const std::size_t first = second / 2 * 2 % kLines.size();
    CaptionBuilder caption(1);
    caption.resumeCaptionLoading().twice().eraseNonDisplayedMemory().twice();
    caption.preamble(14).twice().text(kLines[first]);
    caption.preamble(15).twice().text(kLines[first + 1]).endOfCaption().twice();
    line.at(second * kFramesPerSecond, caption);
    CaptionBuilder rolling(2);
    rolling.rollUp(3).carriageReturn().preamble(13).text(kLines[first]);
    line.at(second * kFramesPerSecond, rolling);
  }
  return line;
}

/// cc_data as 29.97 Hz video has it: both fields, and 18 places for packets of DTVCC, unused.
Bytes ccData(const Line21& line, std::size_t frame) {
  constexpr std::size_t kCcCount = 20;
  Bytes triplets = line.triplets(frame);
  while (triplets.size() < 3 * kCcCount) triplets.insert(triplets.end(), {0xFA, 0x00, 0x00});
  return triplets;
}

/// What comes with each picture.
struct Company {
  std::size_t audioBytes = 0;  ///< a PES packet
  std::size_t nullPackets = 0;
};

/// A recording of `size` bytes whose pictures take `pictureBytes` on average.
void writeRecording(std::ostream& file, std::size_t size, std::size_t pictureBytes,
                    Company company) {
  constexpr std::uint16_t kVideoPid = 0x100;
  constexpr std::uint16_t kAudioPid = 0x101;
  constexpr std::uint8_t kMpegAudio = 0x04;
  const TsProgram program{.pcrPid = kVideoPid,
                          .streams = {{.pid = kVideoPid, .type = TsStream::kH264},
                                      {.pid = kAudioPid, .type = kMpegAudio}}};
  const Line21 line = endlessCaptions(size / pictureBytes + kFramesPerSecond);
  VideoStream video(kVideoPid, pictureBytes,
                    [&line](std::size_t shown) { return ccData(line, shown); });
  writeStream(file, size, [&](TsBuilder& stream) {
    if (video.nextBeginsGroup()) stream.tables(program);
    const std::uint64_t pts = video.nextDts();
    video.addPicture(stream);
    if (company.audioBytes > 0) {
      const auto audio = video.noise().take(company.audioBytes);
      stream.pes(kAudioPid, pesPacket({.streamId = 0xC0, .pts = pts}, audio));
    }
    for (std::size_t i = 0; i < company.nullPackets; ++i) stream.nullPacket();
  });
}

// 10 Mbit/s are 41.7 kB a picture.
void writeDense(std::ostream& file) {
  writeRecording(file, 300 * kMegabyte, 39'000, {});
}

void writeMux(std::ostream& file) {
  writeRecording(file, 500 * kMegabyte, 34'000, {.audioBytes = 1'600, .nullPackets = 20});
}

}  // namespace

std::vector<Input> captionInputs() {
  return {{"captions-dense.ts", writeDense}, {"captions-mux.ts", writeMux}};
}

}  // namespace korr::bench
