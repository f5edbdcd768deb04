// SPDX-License-Identifier: MIT
#include "samples/digital_sample.h"

#include <algorithm>
#include <span>

#include "testkit/encoders/dtvcc_encoder.h"
#include "testkit/encoders/ts_builder.h"
#include "testkit/encoders/video_builder.h"

namespace korr::samples {
namespace {

using encoders::Bytes;
using encoders::DtvccChannel;
using encoders::DtvccCodes;
using encoders::pesPacket;
using encoders::Picture;
using encoders::TsBuilder;
using encoders::TsProgram;
using encoders::TsStream;

constexpr std::size_t kFramesPerSecond = 30;
constexpr std::size_t kFrames = 10 * kFramesPerSecond;
constexpr std::size_t kTripletBytes = 3;
constexpr std::size_t kMostTriplets = 18;  // of 20 in a picture; two are line 21's

// Two services, English and Korean, both for 16:9 (ATSC A/65, 6.9.2).
const Bytes kCaptionServices = {0x86, 13,  0xE2,                    //
                                'e',  'n', 'g',  0xC1, 0x7F, 0xFF,  //
                                'k',  'o', 'r',  0xC2, 0x7F, 0xFF};

/// What begins to be sent with a frame.
void send(DtvccChannel& channel, std::size_t frame) {
  constexpr encoders::DtvccWindow kBottom{.visible = false,
                                          .vertical = 72,
                                          .horizontal = 105,
                                          .anchor = 7,
                                          .rows = 2,
                                          .columns = 32,
                                          .windowStyle = 3};
  constexpr encoders::DtvccWindow kTop{.visible = false,
                                       .priority = 1,
                                       .vertical = 3,
                                       .horizontal = 5,
                                       .columns = 24,
                                       .windowStyle = 2,
                                       .penStyle = 7};
  constexpr encoders::DtvccWindow kRolling{
      .vertical = 72, .horizontal = 20, .anchor = 6, .rows = 2, .columns = 34, .windowStyle = 4};
  switch (frame) {
    case 15:
      channel.add(1, DtvccCodes()
                         .define(0, kBottom)
                         .text("Good evening from the")
                         .carriageReturn()
                         .text("harbour of Ålesund.")
                         .display(1));
      // "안녕하세요, 항구입니다."
      channel.add(2, DtvccCodes()
                         .define(0, kBottom)
                         .eucKr("\xBE\xC8\xB3\xE7\xC7\xCF\xBC\xBC\xBF\xE4, \xC7\xD7\xB1\xB8\xC0\xD4"
                                "\xB4\xCF\xB4\xD9.")
                         .display(1));
      break;
    case 90:
      channel.add(1, DtvccCodes()
                         .hide(1)
                         .define(1, kTop)
                         .text("♪ Sœur Š., « cœur » à 7⅜ … ♪")
                         .display(2)
                         .select(0)
                         .formFeed()
                         .colour({.foreground = 0b111100})
                         .text("ŒUVRES: a cœur ouvert™")
                         .display(1));
      break;
    case 165:
      // "배가 늦습니다." in yellow
      channel.add(2, DtvccCodes()
                         .formFeed()
                         .colour({.foreground = 0b111100})
                         .eucKr("\xB9\xE8\xB0\xA1 \xB4\xCA\xBD\xC0\xB4\xCF\xB4\xD9."));
      channel.add(1,
                  DtvccCodes().destroy(0xFF).define(2, kRolling).text("The wind will turn west"));
      break;
    case 195:
      channel.add(1, DtvccCodes().carriageReturn().text("in the night, and by"));
      break;
    case 225:
      channel.add(1, DtvccCodes().carriageReturn().text("morning the sea is calm."));
      break;
    case 280:
      channel.add(1, DtvccCodes().destroy(0xFF));
      channel.add(2, DtvccCodes().destroy(0xFF));
      break;
    default:
      break;
  }
}

}  // namespace

std::vector<std::uint8_t> digitalTransportStream() {
  constexpr std::uint16_t kVideoPid = 0x100;
  constexpr std::uint64_t kFrameTicks = 3003;
  constexpr std::uint64_t kFirstPts = 10 * 90'000;
  constexpr std::uint64_t kDelay = 18'000;  // from PCR to PTS
  constexpr std::size_t kGroup = 15;        // pictures
  const TsProgram program{
      .pcrPid = kVideoPid,
      .streams = {{.pid = kVideoPid, .type = TsStream::kH264, .descriptors = kCaptionServices}}};

  DtvccChannel channel;
  Bytes waiting;
  TsBuilder stream;
  for (std::size_t frame = 0; frame < kFrames; ++frame) {
    send(channel, frame);
    const Bytes sent = channel.take();
    waiting.insert(waiting.end(), sent.begin(), sent.end());
    const std::size_t size = std::min(waiting.size(), kMostTriplets * kTripletBytes);
    Bytes triplets = {0xFC, 0x80, 0x80, 0xFD, 0x80, 0x80};
    triplets.insert(triplets.end(), waiting.begin(),
                    waiting.begin() + static_cast<std::ptrdiff_t>(size));
    waiting.erase(waiting.begin(), waiting.begin() + static_cast<std::ptrdiff_t>(size));

    const bool beginsGroup = frame % kGroup == 0;
    if (beginsGroup) stream.tables(program);
    const Bytes picture = encode(Picture{.codec = txsub::VideoCodec::H264,
                                         .triplets = triplets,
                                         .temporalReference = static_cast<int>(frame % kGroup),
                                         .beginsGroup = beginsGroup,
                                         .still = true});
    const std::uint64_t pts = kFirstPts + frame * kFrameTicks;
    const auto pcr = frame % 3 == 0 ? std::optional(pts - kDelay) : std::nullopt;
    stream.pes(kVideoPid, pesPacket({.pts = pts, .unbounded = true}, picture), pcr);
  }
  return stream.take();
}

}  // namespace korr::samples
