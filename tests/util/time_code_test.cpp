// SPDX-License-Identifier: MIT
#include "util/time_code.h"

#include <gtest/gtest.h>

namespace korr::util {
namespace {

constexpr TimeCodeRate kRates[] = {
    {24000, 1001, 24, false}, {24, 1, 24, false}, {25, 1, 25, false}, {30000, 1001, 30, false},
    {30000, 1001, 30, true},  {30, 1, 30, false}, {50, 1, 50, false}, {60000, 1001, 60, false},
    {60000, 1001, 60, true},  {60, 1, 60, false},
};

TEST(TimeCode, ComesBackForEveryFrameOfAnHourAndTheLastOfADay) {
  for (const TimeCodeRate& rate : kRates) {
    std::string last;
    for (std::uint64_t frame = 0; frame < std::uint64_t{rate.base} * 3700; ++frame) {
      const std::string code = timeCodeOfFrame(frame, rate);
      ASSERT_EQ(frameOfTimeCode(code, rate), frame) << code;
      ASSERT_LT(last, code);
      last = code;
    }
    const std::uint64_t day = *frameOfTimeCode("24:00:00:00", rate);
    EXPECT_EQ(timeCodeOfFrame(day - 1, rate).substr(0, 8), "23:59:59");
  }
}

TEST(TimeCode, KeepsUpWithTheClockByDroppingNumbers) {
  EXPECT_EQ(timeCodeOfFrame(1799, kRates[4]), "00:00:59;29");
  EXPECT_EQ(timeCodeOfFrame(1800, kRates[4]), "00:01:00;02");
  EXPECT_EQ(timeCodeOfFrame(17'982, kRates[4]), "00:10:00;00");
  EXPECT_EQ(timeCodeOfFrame(3600, kRates[8]), "00:01:00;04");
  EXPECT_EQ(timeCodeOfFrame(1800, kRates[3]), "00:01:00:00");
  EXPECT_EQ(frameOfTimeCode("01:00:00;00", kRates[8]), 215'784U) << "an hour at 59.94";
}

TEST(TimeCode, RefusesWhatIsNone) {
  for (const char* text : {"", "00:00:00", "00:00:60:00", "00:60:00:00", "00:00:00:25",
                           "0a:00:00:00", "00-00-00-00", "00:00:00:000", "-1:00:00:00"}) {
    EXPECT_FALSE(frameOfTimeCode(text, kRates[2])) << text;
  }
}

}  // namespace
}  // namespace korr::util
