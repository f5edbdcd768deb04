// SPDX-License-Identifier: MIT

// The times that come out of whole recordings; ts_clock_test.cpp has the rules.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "tests/readers/mpegts/ts_reading.h"

namespace korr::txsub {
namespace {

using namespace ts_test;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pointwise;

TEST(TsTimes, TimeGoesOnOverTheWrapOfTheClock) {
  TsBuilder stream = TsBuilder().tables(program());
  for (std::uint64_t i = 0; i < 4; ++i) {
    const std::uint64_t now = kWrap - kTicks + i * kTicks;
    stream.pcr(kVideoPid, now % kWrap);
    stream.pes(kTeletextPid, teletextPes((now + kTicks / 2) % kWrap));
  }
  const Reading reading(stream.bytes());
  const double wrap = static_cast<double>(kWrap) / kTicks;
  EXPECT_THAT(reading.secondsOf(kTeletextPid),
              Pointwise(DoubleNear(1e-6), {wrap - 0.5, wrap + 0.5, wrap + 1.5, wrap + 2.5}));
}

TEST(TsTimes, TimeGoesOnOverASplice) {
  TsBuilder stream = TsBuilder().tables(program());
  const auto second = [&](std::uint64_t base, bool discontinuity) {
    for (std::uint64_t i = 0; i < 10; ++i) {
      stream.pcr(kVideoPid, base + i * kTicks / 10, discontinuity && i == 0);
    }
    stream.pes(kTeletextPid, teletextPes(base + kTicks));
  };
  second(100 * kTicks, false);
  second(5 * kTicks, true);        // backwards
  second(40'000 * kTicks, false);  // forwards, and not announced
  second(40'001 * kTicks, false);
  const Reading reading(stream.bytes());
  EXPECT_THAT(reading.secondsOf(kTeletextPid), ElementsAre(101, 102, 103, 104));
}

TEST(TsTimes, AWrongTeletextTimeIsReplacedByThePcr) {
  TsBuilder stream = TsBuilder().tables(program());
  stream.pcr(kVideoPid, 100 * kTicks).pes(kTeletextPid, teletextPes(109 * kTicks));
  stream.pcr(kVideoPid, 101 * kTicks).pes(kTeletextPid, teletextPes(112 * kTicks));
  stream.pcr(kVideoPid, 102 * kTicks).pes(kTeletextPid, teletextPes({}));
  stream.pcr(kVideoPid, 103 * kTicks).pes(kTeletextPid, teletextPes(40'000 * kTicks));
  const Reading reading(stream.bytes());
  EXPECT_THAT(reading.secondsOf(kTeletextPid), ElementsAre(109, 101, 102, 103));
  EXPECT_THAT(reading.logger.lines, ElementsAre(HasSubstr("PCR")));
}

TEST(TsTimes, AClockThatStopsIsCarriedOnByThePictures) {
  TsBuilder stream = TsBuilder().tables(program());
  for (std::uint64_t i = 0; i < 60; ++i) {
    if (i < 5 || i >= 50) stream.pcr(kVideoPid, i * kTicks);
    stream.pes(kVideoPid, videoPes((i + 1) * kTicks, "ab"));
    if (i % 20 == 19) stream.pes(kTeletextPid, teletextPes((i + 1) * kTicks));
  }
  const Reading reading(stream.bytes());
  EXPECT_THAT(reading.secondsOf(kTeletextPid), ElementsAre(20, 40, 60));
  EXPECT_EQ(reading.reader.endTime(1), 60 * kSecond);
}

TEST(TsTimes, TimesAreEstimatedWhereThereAreNone) {
  TsBuilder stream;
  for (int i = 0; i < 3; ++i) stream.pes(kTeletextPid, teletextPes({}));
  const Reading reading(stream.bytes());
  EXPECT_THAT(reading.secondsOf(kTeletextPid), ElementsAre(0, 0.04, 0.08));
  EXPECT_THAT(reading.logger.lines, ElementsAre(HasSubstr("estimated")));
}

TEST(TsTimes, EveryProgramHasItsOwnStartAndEnd) {
  TsBuilder stream;
  const TsProgram first{.pcrPid = 0x100, .streams = {{.pid = 0x100, .type = TsStream::kH264}}};
  TsProgram second = first;
  second.number = 2;
  second.pmtPid = 0x1001;
  second.pcrPid = second.streams[0].pid = 0x200;
  stream.pat(std::array{first, second}).pmt(first).pmt(second);
  stream.pcr(0x100, 9 * kTicks).pes(0x100, videoPes(10 * kTicks, "ab"));
  stream.pcr(0x200, 4999 * kTicks).pes(0x200, videoPes(5000 * kTicks, "cd"));
  const Reading reading(stream.bytes());
  EXPECT_EQ(reading.reader.startTime(1), 10 * kSecond);
  EXPECT_EQ(reading.reader.endTime(1), 10 * kSecond);
  EXPECT_EQ(reading.reader.startTime(2), 5000 * kSecond);
  EXPECT_EQ(reading.reader.startTime(3), std::nullopt);
}

TEST(TsTimes, WhatLiesBeforeTheFirstPcrCountsFromZero) {
  TsBuilder stream = beginning();  // the clock at 0
  stream.pes(kTeletextPid, teletextPes(kWrap - kTicks));
  stream.pes(kVideoPid, videoPes(kWrap - kTicks / 2, "ab"));
  stream.pes(kTeletextPid, teletextPes(kTicks));
  const Reading reading(stream.bytes());
  EXPECT_THAT(reading.secondsOf(kTeletextPid), ElementsAre(0, 1));
  EXPECT_THAT(reading.secondsOf(kVideoPid), ElementsAre(0));
  EXPECT_EQ(reading.reader.startTime(1), 0U);
}

TEST(TsTimes, AStreamFoundBeforeItsTablesGoesByTheClockOfItsProgram) {
  TsBuilder stream;
  for (int i = 0; i < 6; ++i) stream.nullPacket();
  stream.pes(kTeletextPid, teletextPes(kTicks));
  stream.tables(program()).pcr(kVideoPid, 50 * kTicks);
  stream.pes(kTeletextPid, teletextPes(2 * kTicks));  // far from the clock
  const Reading reading(stream.bytes(), {.pid = {}, .tablesDue = std::chrono::milliseconds(0)},
                        TsBuilder::kPacketBytes);
  EXPECT_THAT(reading.secondsOf(kTeletextPid), ElementsAre(1, 50));
  EXPECT_EQ(reading.reader.endTime(1), 50 * kSecond);
}

TEST(TsTimes, SoundThatBeginsFirstIsWhereARecordingBegins) {
  TsProgram withSound = program();
  withSound.streams.push_back({.pid = 0x200, .type = 0x0F});
  TsBuilder stream = TsBuilder().tables(withSound).pcr(kVideoPid, 0);
  stream.pes(0x200, pesPacket({.streamId = 0xC0, .pts = 2 * kTicks}, Bytes(100, 0x55)));
  stream.pes(kVideoPid, videoPes(3 * kTicks, "ab"));
  EXPECT_EQ(Reading(stream.bytes()).reader.startTime(1), 2 * kSecond);
}

TEST(TsTimes, AStreamThatNoTableNamesBelongsToTheOnlyProgram) {
  TsBuilder stream = beginning();
  stream.pcr(kVideoPid, 5 * kTicks);
  stream.pes(0x222, teletextPes({}));
  const Reading reading(stream.bytes(), {.pid = 0x222});
  EXPECT_THAT(reading.secondsOf(0x222), ElementsAre(5));
}

TEST(TsTimes, RivalClocksWithoutTablesAreNotBelieved) {
  TsBuilder stream = TsBuilder().pcr(0x500, 0).pcr(0x501, 5000 * kTicks);
  for (std::uint64_t i = 1; i <= 5; ++i) {
    stream.pcr(i % 2 == 0 ? 0x500 : 0x501, i * kTicks);
    stream.pes(kTeletextPid, teletextPes((90 + i) * kTicks));
  }
  EXPECT_THAT(Reading(stream.bytes()).secondsOf(kTeletextPid), ElementsAre(91, 92, 93, 94, 95));
}

}  // namespace
}  // namespace korr::txsub
