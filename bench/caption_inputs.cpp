#include "bench/caption_inputs.h"

#include <array>
#include <random>
#include <span>

#include "samples/line21.h"
#include "tests/support/caption_builder.h"
#include "tests/support/ts_builder.h"
#include "tests/support/video_builder.h"

namespace korr::bench {
namespace {

using samples::Line21;
using test_support::Bytes;
using test_support::CaptionBuilder;
using test_support::captionSeiMessage;
using test_support::join;
using test_support::pesPacket;
using test_support::seiUnit;
using test_support::TsBuilder;
using test_support::TsProgram;
using test_support::TsStream;

constexpr std::size_t kFramesPerSecond = 30;
constexpr std::uint64_t kFrameTicks = 3003;
constexpr std::size_t kGroup = 15;  // pictures

/// What entropy-coded pictures look like to whoever searches them: noise in which emulation
/// prevention has left no start code.
class Noise {
 public:
  Noise() {
    std::mt19937 random{1};
    unsigned zeros = 0;
    for (std::uint8_t& byte : bytes_) {
      byte = static_cast<std::uint8_t>(random());
      if (zeros >= 2 && byte <= 3) byte = 4;
      zeros = byte == 0 ? zeros + 1 : 0;
    }
  }

  std::span<const std::uint8_t> take(std::size_t size) {
    if (position_ + size > bytes_.size()) position_ = 0;
    const auto taken = std::span<const std::uint8_t>(bytes_).subspan(position_, size);
    position_ += size;
    return taken;
  }

 private:
  Bytes bytes_ = Bytes(4 * kMegabyte);
  std::size_t position_ = 0;
};

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

/// An H.264 picture of `size` bytes in four slices.
Bytes picture(Noise& noise, std::span<const std::uint8_t> triplets, bool idr, std::size_t size) {
  constexpr std::size_t kSlices = 4;
  Bytes bytes{0, 0, 0, 1, 0x09, 0xF0};
  if (idr) bytes = join({bytes, test_support::h264ParameterSets()});
  bytes = join({bytes, seiUnit(txsub::VideoCodec::H264, captionSeiMessage(triplets))});
  for (std::size_t i = 0; i < kSlices; ++i) {
    const std::uint8_t firstByte = i == 0 ? 0x88 : 0x48;  // first_mb_in_slice 0, or not
    const auto header = static_cast<std::uint8_t>(idr ? 0x65 : 0x41);
    bytes.insert(bytes.end(), {0, 0, 1, header, firstByte});
    const auto body = noise.take(size / kSlices);
    bytes.insert(bytes.end(), body.begin(), body.end());
  }
  return bytes;
}

/// Where the picture that is coded as `coded`-th is shown: I P B B P B B ...
std::size_t shownAt(std::size_t coded) {
  if (coded == 0) return 0;
  const std::size_t place = (coded - 1) % 3;
  const std::size_t group = (coded - 1) / 3;
  return group * 3 + (place == 0 ? 3 : place);
}

/// Around the video: how many packets of other PIDs follow each picture.
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
  Noise noise;
  TsBuilder stream;
  std::size_t written = 0;
  for (std::size_t coded = 0; written < size; ++coded) {
    const bool idr = coded == 0 || coded % kGroup == 1;  // in the place of a P picture
    if (idr) stream.tables(program);
    const std::size_t shown = shownAt(coded);
    const std::size_t tenths = idr ? 40 : coded % 3 == 1 ? 11 : 6;  // of the average
    const std::uint64_t dts = 900'000 + coded * kFrameTicks;
    const std::uint64_t pts = 900'000 + (shown + 1) * kFrameTicks;
    const Bytes bytes = picture(noise, ccData(line, shown), idr, pictureBytes * tenths / 10);
    stream.pes(kVideoPid, pesPacket({.pts = pts, .dts = dts, .unbounded = true}, bytes),
               dts - 9'000);
    if (company.audioBytes > 0) {
      const Bytes audio = pesPacket({.streamId = 0xC0, .pts = pts}, noise.take(company.audioBytes));
      stream.pes(kAudioPid, audio);
    }
    for (std::size_t i = 0; i < company.nullPackets; ++i) stream.nullPacket();
    const Bytes packets = stream.take();
    file.write(reinterpret_cast<const char*>(packets.data()),
               static_cast<std::streamsize>(packets.size()));
    written += packets.size();
  }
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
