// SPDX-License-Identifier: MIT
#include "bench/teletext_inputs.h"

#include <array>
#include <cstdint>
#include <string>

#include "bench/video_stream.h"
#include "testkit/encoders/teletext_encoder.h"

namespace korr::bench {
namespace {

using encoders::headerPacket;
using encoders::Pes;
using encoders::pesPacket;
using encoders::rowPacket;
using encoders::stuffedTeletextDataField;
using encoders::TeletextPacket;
using encoders::TsBuilder;
using encoders::TsProgram;
using encoders::TsStream;

constexpr std::uint16_t kVideoPid = 0x100;
constexpr std::uint16_t kTeletextPid = 0x102;
constexpr std::uint32_t kSubtitlePage = 0x888;

/// The packets of a service: pages 100 to 198 in turn, 24 rows each, and every three seconds a new
/// subtitle of two rows.
class TeletextService {
 public:
  TeletextService() {
    for (std::uint32_t i = 0; i < 99; ++i) addPage(0x100 + (i / 10 << 4) + i % 10);
  }

  /// The PES packet of `packets` packets at a time in ticks of 90 kHz.
  Bytes pes(std::uint64_t pts, std::size_t packets) {
    constexpr std::uint64_t kSubtitleTicks = 270'000;
    std::vector<TeletextPacket> field;
    if (pts >= nextSubtitle_) {
      field = subtitle();
      nextSubtitle_ = pts + kSubtitleTicks;
    }
    while (field.size() < packets) field.push_back(pages_[position_++ % pages_.size()]);
    return pesPacket({.streamId = Pes::kPrivateStream1, .pts = pts, .headerDataLength = 0x24},
                     stuffedTeletextDataField(field));
  }

  static TsStream stream() {
    // teletext_descriptor: page 888, English, teletext subtitles
    return {.pid = kTeletextPid, .descriptors = {0x56, 5, 'e', 'n', 'g', 0x10, 0x88}};
  }

 private:
  void addPage(std::uint32_t page) {
    constexpr std::uint32_t kRows = 24;
    pages_.push_back(headerPacket({.page = page, .subtitle = false, .suppressHeader = false}));
    for (std::uint32_t row = 1; row <= kRows; ++row) {
      pages_.push_back(rowPacket(page, row, "A page of news, row after row of it"));
    }
  }

  std::vector<TeletextPacket> subtitle() {
    constexpr std::array<const char*, 3> kTexts{"The ferry leaves at seven,", "not a minute later.",
                                                "Whoever comes late stays."};
    const auto line = [&](std::size_t offset) {
      return "\x0D\x0B\x0B" + std::string(kTexts[(count_ + offset) % kTexts.size()]) + "\x0A\x0A";
    };
    ++count_;
    return {headerPacket({.page = kSubtitlePage}), rowPacket(kSubtitlePage, 20, line(0)),
            rowPacket(kSubtitlePage, 22, line(1))};
  }

  std::vector<TeletextPacket> pages_;
  std::size_t position_ = 0;
  std::size_t count_ = 0;
  std::uint64_t nextSubtitle_ = 0;
};

void writeDense(std::ostream& file) {
  constexpr std::uint64_t kPeriod = 3'600;  // 40 ms
  constexpr std::size_t kPackets = 31;      // of teletext fill eight transport packets
  const TsProgram program{.pcrPid = kTeletextPid, .streams = {TeletextService::stream()}};
  TeletextService service;
  std::uint64_t pts = 900'000;
  writeStream(file, 100 * kMegabyte, [&](TsBuilder& stream) {
    stream.tables(program).pcr(kTeletextPid, pts - 9'000);
    for (int i = 0; i < 25; ++i, pts += kPeriod) {
      stream.pes(kTeletextPid, service.pes(pts, kPackets));
    }
  });
}

void writeMux(std::ostream& file) {
  constexpr std::size_t kPackets = 7;  // of teletext fill two transport packets
  const TsProgram program{
      .pcrPid = kVideoPid,
      .streams = {{.pid = kVideoPid, .type = TsStream::kH264}, TeletextService::stream()}};
  TeletextService service;
  VideoStream video(kVideoPid, 41'000, {});
  writeStream(file, 500 * kMegabyte, [&](TsBuilder& stream) {
    if (video.nextBeginsGroup()) stream.tables(program);
    const bool withTeletext = video.picturesAdded() % 6 != 0;
    if (withTeletext) stream.pes(kTeletextPid, service.pes(video.nextDts(), kPackets));
    video.addPicture(stream);
  });
}

}  // namespace

std::vector<Input> teletextInputs() {
  return {{"teletext-dense.ts", writeDense}, {"teletext-mux.ts", writeMux}};
}

}  // namespace korr::bench
