// SPDX-License-Identifier: MIT
#include "readers/samples_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "testkit/reader_support.h"

namespace korr::txsub {
namespace {

using test_support::MemorySource;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

struct Samples : test_support::Reading<SamplesReader> {
  explicit Samples(const std::string& lines)
      : Reading(std::make_unique<MemorySource>("{\"stream\":\"dvb\"}\n" + lines)) {}
};

std::string line(std::uint64_t start, std::uint64_t stop) {
  return R"({"data":"AA==","start":)" + std::to_string(start) + R"(,"stop":)" +
         std::to_string(stop) + "}\n";
}

TEST(SamplesReader, BeginsAndEndsWithTheTimesOfItsSamples) {
  const Samples samples(line(500, 600) + line(300, 900) + line(800, 700) + R"({"data":"AA=="})");
  EXPECT_THAT(samples.listener.samples, SizeIs(4));
  EXPECT_EQ(samples.reader.startTime(0), 300U);
  EXPECT_EQ(samples.reader.endTime(0), 900U);
  EXPECT_EQ(Samples(line(800, 700)).reader.endTime(0), 800U) << "a stop before its start";
  EXPECT_EQ(Samples("").reader.endTime(0), std::nullopt);
}

TEST(SamplesReader, SkipsLinesThatAreNoneByTheirNumber) {
  const std::string endless(17 * 1024 * 1024, 'x');
  const Samples samples("nonsense\n" + line(1, 2) + endless + '\n' + line(3, 4));
  EXPECT_THAT(samples.listener.samples, SizeIs(2));
  EXPECT_THAT(samples.logger.lines,
              ElementsAre("line 2 is no sample and is skipped: not valid JSON",
                          "line 4 is no sample and is skipped: longer than 16777216 bytes"));
}

TEST(SamplesReader, RefusesAHeaderThatIsNone) {
  for (const char* text : {"", "{}", "{\"data\":\"\"}\n", "[\n"}) {
    EXPECT_THROW(SamplesReader(std::make_unique<MemorySource>(std::string_view(text)), {}),
                 util::TessaryException)
        << text;
  }
}

}  // namespace
}  // namespace korr::txsub
