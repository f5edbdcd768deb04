// The filter in a running graph.
#include <gtest/gtest.h>

#include "tests/filter/graph_test_bench.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {
namespace {

const std::vector<std::uint8_t> kNoCaption = {0xFC, 0x80, 0x80};

// A teletext descriptor: one English subtitle page.
std::vector<std::uint8_t> descriptorOfPage(std::uint8_t magazine, std::uint8_t page) {
  return {0x56, 5, 'e', 'n', 'g', static_cast<std::uint8_t>(2 << 3 | magazine), page};
}

TEST(Streaming, LogsTheDescriptorsWhenTheGraphLeavesStopped) {
  GraphTestBench bench({.input = SubtitleInputType::Teletext,
                        .language = "eng",
                        .format = descriptorOfPage(0, 0x88)});
  bench.logger.take();
  EXPECT_EQ(bench.pause(), S_OK);
  const auto lines = bench.logger.take();
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines[0], "2 Teletext descriptor(s) detected : [eng, 888] ");
  EXPECT_EQ(lines[1], "2 => Follow language eng on page 888");
}

TEST(Streaming, GoesOnWithoutOutputInAModeThatMakesNoText) {
  GraphTestBench bench({});
  bench.configure({.mode = ConversionMode::BurnIntoVideo});
  bench.logger.take();
  EXPECT_GE(bench.run(), 0);
  EXPECT_EQ(bench.source->push(captionSample(1, kNoCaption)), S_OK);
  bench.finish();
  const std::vector<std::string> kExpected(2, "0 Error: Unexpected subtitle conversion mode");
  EXPECT_EQ(bench.logger.take(), kExpected) << "once for Pause, once for the sample";
  EXPECT_TRUE(bench.received().empty());
}

}  // namespace
}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
