// SPDX-License-Identifier: MIT
#include "bench/caption_inputs.h"

#include <algorithm>
#include <array>
#include <functional>
#include <vector>

#include "bench/video_stream.h"
#include "samples/line21.h"
#include "testkit/encoders/caption_builder.h"
#include "testkit/encoders/dtvcc_encoder.h"

namespace korr::bench {
namespace {

using encoders::CaptionBuilder;
using encoders::pesPacket;
using encoders::TsBuilder;
using encoders::TsProgram;
using encoders::TsStream;
using samples::Line21;

constexpr std::size_t kFramesPerSecond = VideoStream::kFramesPerSecond;
constexpr std::size_t kDigitalTriplets = 18;  // a picture
constexpr std::array<const char*, 4> kLines{"The ferry leaves at seven,", "not a minute later.",
                                            "Whoever comes late,", "stays on the island."};

/// Captions without a pause: a pop-on caption every two seconds in field 1, roll-up in field 2.
Line21 endlessCaptions(std::size_t frames) {
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

/// The triplets of a picture that are not line 21's.
using OtherTriplets = std::function<Bytes(std::size_t frame)>;

/// The same pop-on captions as service 1 of CEA-708, in two windows that take turns.
OtherTriplets digitalCaptions() {
  constexpr std::size_t kFrames = 2 * kFramesPerSecond;
  encoders::DtvccChannel channel;
  std::vector<Bytes> round;  // of both windows, and of sequence numbers
  for (unsigned i = 0; i < 8; ++i) {
    const unsigned window = i % 2;
    encoders::DtvccCodes codes;
    codes.define(window, {.visible = false,
                          .relative = true,
                          .vertical = 80,
                          .horizontal = 50,
                          .anchor = 7,
                          .rows = 2,
                          .columns = 32});
    codes.clear(1U << window);
    codes.text(kLines[2 * window]).carriageReturn().text(kLines[2 * window + 1]);
    codes.hide(2U >> window).display(1U << window);
    round.push_back(channel.add(1, codes).take());
  }
  return [round](std::size_t frame) {
    const Bytes& caption = round[frame / kFrames % round.size()];
    const std::size_t from = std::min(3 * kDigitalTriplets * (frame % kFrames), caption.size());
    const std::size_t to = std::min(from + 3 * kDigitalTriplets, caption.size());
    return Bytes(caption.data() + from, caption.data() + to);
  };
}

/// cc_data as 29.97 Hz video has it: both fields, and places for packets of DTVCC.
Bytes ccData(const Line21& line, const OtherTriplets& others, std::size_t frame) {
  constexpr std::size_t kCcCount = 2 + kDigitalTriplets;
  Bytes triplets = line.triplets(frame);
  if (others) {
    const Bytes more = others(frame);
    triplets.insert(triplets.end(), more.begin(), more.end());
  }
  while (triplets.size() < 3 * kCcCount) triplets.insert(triplets.end(), {0xFA, 0x00, 0x00});
  return triplets;
}

/// What comes with each picture.
struct Company {
  std::size_t audioBytes = 0;  ///< a PES packet
  std::size_t nullPackets = 0;
  OtherTriplets others = {};
};

/// A recording of `size` bytes whose pictures take `pictureBytes` on average.
void writeRecording(std::ostream& file, std::size_t size, std::size_t pictureBytes,
                    const Company& company) {
  constexpr std::uint16_t kVideoPid = 0x100;
  constexpr std::uint16_t kAudioPid = 0x101;
  constexpr std::uint8_t kMpegAudio = 0x04;
  const TsProgram program{.pcrPid = kVideoPid,
                          .streams = {{.pid = kVideoPid, .type = TsStream::kH264},
                                      {.pid = kAudioPid, .type = kMpegAudio}}};
  const Line21 line = endlessCaptions(size / pictureBytes + kFramesPerSecond);
  VideoStream video(kVideoPid, pictureBytes,
                    [&](std::size_t shown) { return ccData(line, company.others, shown); });
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

// Small pictures, so that what captions take shows.
void writeDigital(std::ostream& file) {
  writeRecording(file, 100 * kMegabyte, 2'000, {.others = digitalCaptions()});
}

}  // namespace

std::vector<Input> captionInputs() {
  return {{"captions-dense.ts", writeDense},
          {"captions-digital.ts", writeDigital},
          {"captions-mux.ts", writeMux}};
}

}  // namespace korr::bench
