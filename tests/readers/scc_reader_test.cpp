// SPDX-License-Identifier: MIT
#include "readers/scc_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "testkit/reader_support.h"

namespace korr::txsub {
namespace {

using test_support::MemorySource;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr MediaTime frames(std::uint64_t count) {
  return count * 1001 * 10'000'000 / 30000;
}

struct Scc : test_support::Reading<SccReader> {
  explicit Scc(const std::string& text, std::size_t most = SIZE_MAX)
      : Reading(std::make_unique<MemorySource>(text, most)) {}

  /// The samples as "frame:pair".
  std::vector<std::string> pairs() const {
    std::vector<std::string> pairs;
    for (const auto& [stream, sample] : listener.samples) {
      char text[40];
      std::snprintf(text, sizeof text, "%.0f:%02x%02x",
                    static_cast<double>(sample.times->start) * 30 / 10'010'000, sample.data.at(1),
                    sample.data.at(2));
      pairs.emplace_back(text);
    }
    return pairs;
  }
};

TEST(TimeCode, CountsFramesOfBothKinds) {
  EXPECT_EQ(frameOfTimeCode("00:00:01:02"), 32U);
  EXPECT_EQ(frameOfTimeCode("01:00:00:00"), 108'000U);
  // Drop-frame: 00:01:00;02 follows 00:00:59;29, and nothing is left out in minute 10.
  EXPECT_EQ(frameOfTimeCode("00:00:59;29"), 1799U);
  EXPECT_EQ(frameOfTimeCode("00:01:00;02"), 1800U);
  EXPECT_EQ(frameOfTimeCode("00:10:00;00"), 17'982U);
  // An hour of drop-frame time code is an hour to within a tenth of a frame.
  EXPECT_NEAR(static_cast<double>(frames(*frameOfTimeCode("01:00:00;00"))), 3600e7, 4e4);
}

TEST(TimeCode, RefusesWhatIsNone) {
  for (const char* text : {"", "00:00:00", "00:00:60:00", "00:60:00:00", "00:00:00:30",
                           "0a:00:00:00", "00-00-00-00", "00:00:00:000", "-1:00:00:00"}) {
    EXPECT_FALSE(frameOfTimeCode(text)) << text;
  }
}

TEST(SccReader, SendsOnePairAFrame) {
  const Scc scc("Scenarist_SCC V1.0\n\n00:00:01:00\t9420 C8e9 2c80\n\n00:00:02:00\t942f\n");
  EXPECT_THAT(scc.pairs(), ElementsAre("30:9420", "31:c8e9", "32:2c80", "60:942f"));
  EXPECT_THAT(scc.logger.lines, IsEmpty());
  const InputSample& first = scc.listener.samples.front().second;
  EXPECT_EQ(first.data[0], 0xFC);
  EXPECT_EQ(first.times, (InputSample::Times{frames(30), frames(31)}));
  EXPECT_EQ(scc.reader.endTime(0), frames(61));
}

TEST(SccReader, ReadsEveryLineEndingAndCut) {
  const std::string text =
      "\xEF\xBB\xBFScenarist_SCC V1.0\r\n\r\n00:00:01;00  9420 9420  \r\n"
      "00:00:02;00\t942c";
  for (std::size_t most = 1; most < 30; ++most) {
    EXPECT_THAT(Scc(text, most).pairs(), ElementsAre("30:9420", "31:9420", "60:942c"));
  }
}

TEST(SccReader, ALineWaitsForThePairsOfTheLineBefore) {
  const Scc scc("Scenarist_SCC V1.0\n00:00:01:00 9420 9421 9422\n00:00:01:01 942c\n");
  EXPECT_THAT(scc.pairs(), ElementsAre("30:9420", "31:9421", "32:9422", "33:942c"));
}

// A line of text alone goes on in its field; a preamble is the same in both.
TEST(SccReader, TakesTheFieldFromTheControlCodes) {
  const Scc scc(
      "Scenarist_SCC V1.0\n00:00:01:00 9170 1520 C8e9\n00:00:02:00 C8e9\n00:00:03:00 9d2f\n"
      "00:00:04:00 9540 1c20\n");
  std::vector<int> fields;
  for (const auto& [stream, sample] : scc.listener.samples) {
    fields.push_back((sample.data[0] & 3) + 1);
  }
  EXPECT_THAT(fields, ElementsAre(2, 2, 2, 2, 2, 1, 1));
}

TEST(SccReader, LeavesOutDamagedLinesByNumber) {
  const Scc scc(
      "Scenarist_SCC V1.0\n\n00:00:01:00 9420\n00:00:99:00 9421\n00:00:03:00 94 2c\n"
      "00:00:04:00 9425 94zz\n00:00:05:00 942c\n00:00:02:00 942f\n");
  EXPECT_THAT(scc.pairs(), ElementsAre("30:9420", "150:942c", "151:942f"));
  EXPECT_THAT(scc.logger.lines,
              ElementsAre("line 4: \"00:00:99:00\" is no time code HH:MM:SS:FF or HH:MM:SS;FF; the "
                          "line is left out",
                          "line 5: \"94\" is no pair of hexadecimal bytes; the line is left out",
                          "line 6: \"94zz\" is no pair of hexadecimal bytes; the line is left out",
                          "line 8: its time code lies before that of the line before; its captions "
                          "follow at once"));
}

TEST(SccReader, LeavesOutALineWithoutEnd) {
  std::string text = "Scenarist_SCC V1.0\n00:00:01:00";
  for (int i = 0; i < 100'000; ++i) text += " 9420";
  const Scc scc(text + "\n00:00:03:00 942c\n");
  EXPECT_THAT(scc.pairs(), ElementsAre("90:942c"));
  EXPECT_THAT(scc.logger.lines, ElementsAre(HasSubstr("line 2: longer than")));
}

TEST(SccReader, CountsFromTheWholeHour) {
  EXPECT_EQ(Scc("Scenarist_SCC V1.0\n01:00:02:00 9420\n").reader.startTime(0), frames(108'000));
  EXPECT_EQ(Scc("Scenarist_SCC V1.0\n01:00:02;00 9420\n").reader.startTime(0), frames(107'892));
  EXPECT_EQ(Scc("Scenarist_SCC V1.0\n00:59:02:00 9420\n").reader.startTime(0), 0U);
  EXPECT_EQ(Scc("Scenarist_SCC V1.0\n").reader.startTime(0), std::nullopt);
}

TEST(SccReader, RefusesOtherFiles) {
  EXPECT_THROW(Scc(""), util::TessaryException);
  EXPECT_THROW(Scc("\n\n"), util::TessaryException);
  EXPECT_THROW(Scc("WEBVTT\n"), util::TessaryException);
  EXPECT_THROW(Scc(std::string(200'000, 'x')), util::TessaryException);
}

}  // namespace
}  // namespace korr::txsub
