// SPDX-License-Identifier: MIT
#include "bench/made_programme.h"

#include <utility>

#include "testkit/encoders/teletext_encoder.h"
#include "testkit/encoders/video_builder.h"

namespace korr::bench {

namespace {

using encoders::Pes;
using encoders::pesPacket;
using encoders::TeletextPacket;

constexpr std::uint64_t kCueEvery = 4;  // seconds
constexpr std::uint64_t kTenth = MadeProgramme::kSecond / 10;
constexpr std::uint64_t kCueAt = 3 * kTenth;
constexpr std::uint64_t kCueLength = 26 * kTenth;

TeletextPacket anyOtherHeader() {
  return encoders::headerPacket({.page = 0x8FF, .subtitle = false});
}

}  // namespace

Bytes MadeProgramme::second() {
  tables();
  const std::uint64_t step = kSecond / settings_.picturesPerSecond;
  const std::uint64_t end = time_ + kSecond;
  for (std::uint64_t now = time_; now < end; now += step) {
    stream_.pcr(kMadeVideoPid, stampOf(now), std::exchange(toldJumps_, jumps_) != jumps_);
    if (hasVideo) picture(now);
    teletext(now);
  }
  time_ = end;
  return stream_.take();
}

void MadeProgramme::tables() {
  if (std::exchange(hadSecondPage_, hasSecondPage) != hasSecondPage) ++version_;
  Bytes descriptor{0x56, 5, 's', 'w', 'e', 0x10, 0x88};
  if (hasSecondPage) {
    descriptor[1] = 10;
    descriptor.insert(descriptor.end(), {'n', 'o', 'r', 0x10, 0x89});
  }
  stream_.tables({.pcrPid = kMadeVideoPid,
                  .streams = {{.pid = kMadeVideoPid, .type = encoders::TsStream::kH264},
                              {.pid = kMadeTeletextPid, .descriptors = descriptor}}},
                 version_ % 32);
}

void MadeProgramme::picture(std::uint64_t now) {
  const bool begins = leftInGroup_ == 0;
  if (begins) {
    leftInGroup_ = settings_.picturesPerSecond +
                   static_cast<unsigned>(random_() % (2 * settings_.picturesPerSecond));
    accessPoints.push_back({.time = now + kLead, .stamp = stampOf(now + kLead)});
  }
  --leftInGroup_;
  stream_.pes(kMadeVideoPid, pesPacket({.pts = stampOf(now + kLead), .unbounded = true},
                                       encoders::encode({.beginsGroup = begins,
                                                         .slices = 1,
                                                         .sliceBytes = settings_.pictureBytes})));
}

void MadeProgramme::teletext(std::uint64_t now) {
  const std::uint64_t inPlan = now % (kCueEvery * kSecond);
  const std::uint64_t step = kSecond / settings_.picturesPerSecond;
  std::vector<TeletextPacket> packets;
  const auto show = [&](std::uint32_t number, bool isEnded) {
    std::string text("P");
    text.append(std::to_string(number & 0xF)).append(" C").append(std::to_string(cueCount_));
    packets.push_back(encoders::headerPacket({.page = number}));
    packets.push_back(
        encoders::rowPacket(number, 20, std::string("\x0B\x0B").append(text).append("\x0A\x0A")));
    if (isEnded) packets.push_back(anyOtherHeader());
    cues.push_back({.text = text,
                    .time = now + kTeletextLead,
                    .stamp = stampOf(now + kTeletextLead),
                    .stopStamp = stampOf(now + kTeletextLead + kCueLength)});
  };
  const auto isAt = [&](std::uint64_t time) { return inPlan >= time && inPlan < time + step; };
  if (hasCues && isAt(kCueAt)) {
    ++cueCount_;
    show(0x888, cueCount_ % 2 == 0);
    if (hasSecondPage) show(0x889, true);
  } else if (isAt(kCueAt + kCueLength)) {
    packets = {encoders::headerPacket({.page = 0x888}), encoders::headerPacket({.page = 0x889}),
               anyOtherHeader()};
  } else if (now % kSecond >= step) {
    return;  // once a second is enough
  }
  stream_.pes(kMadeTeletextPid, pesPacket({.streamId = Pes::kPrivateStream1,
                                           .pts = stampOf(now + kTeletextLead),
                                           .headerDataLength = 0x24},
                                          encoders::stuffedTeletextDataField(packets)));
}

}  // namespace korr::bench
