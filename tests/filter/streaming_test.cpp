// SPDX-License-Identifier: MIT

// What comes out of the filter in a running graph.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/filter/graph_test_bench.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::uint64_t kSecond = 10'000'000;

// A teletext descriptor: one English subtitle page of magazine 8.
std::vector<std::uint8_t> descriptorOfPage(std::uint8_t page) {
  return {0x56, 5, 'e', 'n', 'g', 2 << 3 | 0, page};
}

TEST(Streaming, ForgetsEverythingOfBeforeAStop) {
  GraphTestBench bench({});
  for (int i = 0; i < 2; ++i) {
    bench.play({captionText(1, "Hello")});
    ASSERT_EQ(bench.stop(), S_OK);
  }
  EXPECT_TRUE(bench.received().empty()) << "each run had one unit, and the first is silent";
  EXPECT_EQ(bench.source->push(captionText(2, "late")), VFW_E_NOT_COMMITTED);
}

TEST(Streaming, ForgetsEverythingOfBeforeAFlush) {
  GraphTestBench bench({});
  bench.play({captionText(100, "before"), captionSample(102)});
  ASSERT_EQ(bench.source->beginFlush(), S_OK);
  EXPECT_EQ(bench.source->push(captionSample(103)), S_FALSE);
  ASSERT_EQ(bench.source->endFlush(), S_OK);
  EXPECT_EQ(bench.source->newSegment(0, 10 * kSecond, 1.0), S_OK);
  bench.play({captionText(1, "Hello"), captionSample(3)});
  const auto received = bench.received();
  ASSERT_EQ(received.size(), 2u);
  EXPECT_EQ(received[1].start, 1 * kSecond);
  EXPECT_EQ(received[1].stop, 3 * kSecond);
  EXPECT_THAT(received[1].data, HasSubstr("Hello"));
}

TEST(Streaming, RebuildsTheChainForAnotherFormatBlock) {
  GraphTestBench bench({.isTeletext = true, .language = "eng"});
  const auto sampleWith = [](std::uint8_t page) {
    InputSample sample = captionSample(1);
    sample.format = descriptorOfPage(page);
    return sample;
  };
  bench.play({sampleWith(0x88), sampleWith(0x88), sampleWith(0x77)});
  EXPECT_THAT(bench.logger.take(), ElementsAre("2 No Teletext descriptor detected",
                                               "2 Teletext descriptor(s) detected : [eng, 888] ",
                                               "2 => Follow language eng on page 888",
                                               "2 Teletext descriptor(s) detected : [eng, 877] ",
                                               "2 => Follow language eng on page 877"))
      << "once when the graph leaves stopped, then for every sample that changes them";
  CMediaType type;
  bench.filter->inputPin().ConnectionMediaType(&type);
  ASSERT_EQ(type.cbFormat, 7u);
  EXPECT_EQ(type.pbFormat[6], 0x77) << "the sample's type is the connection's now";
}

TEST(Streaming, KeepsTheChainOfOtherStreamsWhateverTheirFormatBlock) {
  GraphTestBench bench({});
  InputSample end = captionSample(3);
  end.format = {1, 2, 3};
  bench.play({captionText(1, "Hello"), end});
  ASSERT_EQ(bench.received().size(), 1u);
  EXPECT_THAT(bench.received()[0].data, HasSubstr("Hello"));
}

TEST(Streaming, GoesOnWithoutOutputInAModeThatMakesNoText) {
  GraphTestBench bench({});
  bench.configure({.mode = ConversionMode::BurnIntoVideo});
  bench.play({captionSample(1)});
  EXPECT_THAT(bench.logger.take(), ElementsAre("0 Error: Unexpected subtitle conversion mode",
                                               "0 Error: Unexpected subtitle conversion mode"))
      << "once for Pause, once for the sample";
  EXPECT_TRUE(bench.received().empty());
}

TEST(Streaming, TakesANewConfigurationWhenItNextStarts) {
  GraphTestBench bench({});
  ASSERT_GE(bench.run(), 0);
  bench.configure({.page = 2});
  bench.play({captionText(1, "Hello"), captionSample(3)});
  ASSERT_EQ(bench.stop(), S_OK);
  bench.play({captionText(1, "Hello"), captionSample(3)});
  ASSERT_EQ(bench.received().size(), 2u);
  EXPECT_THAT(bench.received()[0].data, HasSubstr("Hello"));
  EXPECT_EQ(bench.received()[1].data, "") << "the second service has no captions";
}

}  // namespace
}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
