// SPDX-License-Identifier: MIT
#include "readers/mpegts/ts_clock.h"

#include <gtest/gtest.h>

namespace korr::txsub {
namespace {

constexpr std::uint64_t kWrap = std::uint64_t{1} << 33;
constexpr std::uint64_t kSeconds = kTicksPerSecond;
constexpr std::uint64_t kStep = kSeconds / 25;

TsClock clockAt(std::uint64_t pcr) {
  TsClock clock;
  clock.onPcr(pcr, false);
  return clock;
}

TEST(TsClock, AGapInPcrsIsTimeThatPassed) {
  TsClock clock = clockAt(kSeconds);
  clock.onPcr(10 * kSeconds, false);
  EXPECT_EQ(clock.now(), 10 * kSeconds);
  clock.onPcr(20 * kSeconds, false);
  EXPECT_EQ(clock.now(), 20 * kSeconds);
}

TEST(TsClock, ASpliceTakesTheStepBeforeIt) {
  TsClock clock = clockAt(0);
  clock.onPcr(kStep, false);
  clock.onPcr(kStep + 10 * kSeconds + 1, false);  // too far
  EXPECT_EQ(clock.now(), 2 * kStep);
  clock.onPcr(kSeconds, false);  // back
  EXPECT_EQ(clock.now(), 3 * kStep);
  clock.onPcr(2 * kSeconds, true);  // announced
  EXPECT_EQ(clock.now(), 4 * kStep);
}

TEST(TsClock, AGapIsNotTakenForTheStepOfASplice) {
  TsClock clock = clockAt(0);
  clock.onPcr(5 * kSeconds, false);
  clock.onPcr(4000 * kSeconds, false);
  EXPECT_EQ(clock.now(), 5 * kSeconds + kSeconds / 10) << "the longest that PCRs may be apart";
}

TEST(TsClock, VouchesForTenSecondsAroundItself) {
  const TsClock clock = clockAt(20 * kSeconds);
  EXPECT_EQ(clock.place(30 * kSeconds), 30 * kSeconds);
  EXPECT_EQ(clock.place(10 * kSeconds), 10 * kSeconds);
  EXPECT_EQ(clock.place(30 * kSeconds + 1), std::nullopt);
  EXPECT_EQ(clock.place(10 * kSeconds - 1), std::nullopt);
  EXPECT_EQ(TsClock().place(0), std::nullopt);
  EXPECT_EQ(clockAt(0).place(kWrap - kSeconds), -kTicksPerSecond) << "before the first PCR";
}

TEST(TsClock, APcrThatLagsBehindTheCarriedTimeIsNoSplice) {
  TsClock clock = clockAt(0);
  clock.carryOn(20 * kSeconds, 20 * kTicksPerSecond);
  EXPECT_EQ(clock.now(), 20 * kSeconds);
  clock.onPcr(19 * kSeconds, false);  // PTS run ahead of the PCR
  EXPECT_EQ(clock.now(), 19 * kSeconds);
  clock.onPcr(18 * kSeconds, false);
  EXPECT_EQ(clock.now(), 19 * kSeconds) << "only the first one may lag";
}

TEST(TsStreamClock, CarriesAClockOnThatHasStopped) {
  TsClock clock = clockAt(0);
  TsStreamClock pictures;
  for (std::uint64_t second = 1; second <= 30; ++second) {
    EXPECT_EQ(pictures.place(second * kSeconds, clock), second * kSeconds);
  }
  EXPECT_GE(clock.now(), 20 * kSeconds);
  EXPECT_EQ(TsStreamClock().placeSubtitle(30 * kSeconds, clock), 30 * kSeconds);
}

TEST(TsStreamClock, KeepsItsOwnDistancesWhereTheClockDoesNotVouch) {
  TsClock clock = clockAt(0);
  TsStreamClock pictures;
  EXPECT_EQ(pictures.place(1000 * kSeconds, clock), 0);
  EXPECT_EQ(pictures.place(1000 * kSeconds + kStep, clock), kStep);
  EXPECT_EQ(pictures.place(5000 * kSeconds, clock), 0) << "too far from its last, too";
}

TEST(TsStreamClock, WithoutAClockAPauseIsKeptAndAStepBackIsNot) {
  TsClock none;
  TsStreamClock stream;
  EXPECT_EQ(stream.place(100 * kSeconds, none), 100 * kSeconds);
  EXPECT_EQ(stream.place(400 * kSeconds, none), 400 * kSeconds);
  EXPECT_EQ(stream.place(395 * kSeconds, none), 395 * kSeconds) << "reordered pictures";
  EXPECT_EQ(stream.place(10 * kSeconds, none), 395 * kSeconds);
  EXPECT_EQ(stream.place(11 * kSeconds, none), 396 * kSeconds);
  EXPECT_EQ(TsStreamClock().placeSubtitle({}, none), std::nullopt);
}

}  // namespace
}  // namespace korr::txsub
