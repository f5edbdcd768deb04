// What comes out of the filter in a running graph.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "samples/encoders/caption_builder.h"
#include "tests/filter/graph_test_bench.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::uint64_t kSecond = 10'000'000;
const std::vector<std::uint8_t> kNoCaption = {0xFC, 0x80, 0x80};

// A teletext descriptor: one English subtitle page.
std::vector<std::uint8_t> descriptorOfPage(std::uint8_t magazine, std::uint8_t page) {
  return {0x56, 5, 'e', 'n', 'g', static_cast<std::uint8_t>(2 << 3 | magazine), page};
}

TEST(Streaming, DeliversEachDocumentOverItsInterval) {
  GraphTestBench bench({});
  ASSERT_GE(bench.run(), 0);
  bench.push(captionText(1, "Hello"));
  bench.push(captionSample(4, kNoCaption));
  bench.push(captionText(5, "World"));
  bench.push(captionSample(5.5, kNoCaption));
  bench.finish();

  const auto received = bench.received();
  ASSERT_EQ(received.size(), 3u) << "the document from 5 on is pending, and never flushed";
  EXPECT_EQ(received[0].start, 1 * kSecond);
  EXPECT_EQ(received[0].stop, 3 * kSecond) << "a segment of 2000 ms";
  EXPECT_EQ(received[1].stop, 4 * kSecond);
  EXPECT_EQ(received[0].data, received[1].data);
  EXPECT_THAT(received[0].data, HasSubstr("Hello"));
  EXPECT_EQ(received[2].start, 4 * kSecond);
  EXPECT_EQ(received[2].stop, 5 * kSecond);
  for (const auto& sample : received) EXPECT_TRUE(sample.sync && sample.discontinuity);
}

TEST(Streaming, CutsALongDocumentIntoBuffers) {
  GraphTestBench bench({.mode = ConversionMode::Ttml});
  ASSERT_GE(bench.run(), 0);
  encoders::CaptionBuilder rows;
  rows.resumeCaptionLoading();
  for (int row = 1; row <= 15; ++row) rows.preamble(row).text("thirty-two characters in each row");
  bench.push(captionSample(1, rows.endOfCaption().triplets()));
  bench.push(captionText(2, "World"));
  bench.finish();

  const auto received = bench.received();
  ASSERT_GT(received.size(), 1u);
  std::string document;
  for (std::size_t i = 0; i < received.size(); ++i) {
    EXPECT_EQ(received[i].sync, i == 0);
    EXPECT_EQ(received[i].discontinuity, i == 0);
    EXPECT_EQ(received[i].start, 1 * kSecond);
    EXPECT_EQ(received[i].stop, 2 * kSecond);
    EXPECT_LE(received[i].data.size(), 1024u);
    EXPECT_TRUE(received[i].data.size() == 1024u || i + 1 == received.size());
    document += received[i].data;
  }
  EXPECT_THAT(document, testing::StartsWith("<?xml"));
  EXPECT_THAT(document, testing::EndsWith(">\n"));
}

TEST(Streaming, ForgetsEverythingOfBeforeAStop) {
  GraphTestBench bench({});
  for (int i = 0; i < 2; ++i) {
    ASSERT_GE(bench.run(), 0);
    bench.push(captionText(1, "Hello"));
    bench.finish();
    ASSERT_EQ(bench.stop(), S_OK);
  }
  EXPECT_TRUE(bench.received().empty()) << "each run had one unit, and the first is silent";
  EXPECT_EQ(bench.source->push(captionText(2, "late")), VFW_E_NOT_COMMITTED);
}

TEST(Streaming, ForgetsEverythingOfBeforeAFlush) {
  GraphTestBench bench({});
  ASSERT_GE(bench.run(), 0);
  bench.push(captionText(100, "before"));
  bench.push(captionSample(102, kNoCaption));
  ASSERT_TRUE(bench.waitForSamples(1));
  ASSERT_EQ(bench.source->beginFlush(), S_OK);
  EXPECT_EQ(bench.source->push(captionSample(103, kNoCaption)), S_FALSE);
  ASSERT_EQ(bench.source->endFlush(), S_OK);
  EXPECT_EQ(bench.source->newSegment(0, 10 * kSecond, 1.0), S_OK);
  bench.push(captionText(1, "after"));
  bench.push(captionSample(3, kNoCaption));
  bench.finish();

  const auto received = bench.received();
  ASSERT_EQ(received.size(), 2u);
  EXPECT_EQ(received[1].start, 1 * kSecond);
  EXPECT_THAT(received[1].data, HasSubstr("after"));
}

TEST(Streaming, LogsTheDescriptorsWhenTheGraphLeavesStopped) {
  GraphTestBench bench({.input = SubtitleInputType::Teletext,
                        .language = "eng",
                        .format = descriptorOfPage(0, 0x88)});
  bench.logger.take();
  EXPECT_GE(bench.pause(), 0);
  const auto lines = bench.logger.take();
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines[0], "2 Teletext descriptor(s) detected : [eng, 888] ");
  EXPECT_EQ(lines[1], "2 => Follow language eng on page 888");
}

TEST(Streaming, RebuildsTheChainForAnotherFormatBlock) {
  GraphTestBench bench({.input = SubtitleInputType::Teletext, .language = "eng"});
  bench.logger.take();
  ASSERT_GE(bench.run(), 0);
  InputSample sample = captionSample(1, kNoCaption);
  for (const std::uint8_t page : std::initializer_list<std::uint8_t>{0x88, 0x88, 0x77}) {
    sample.format = descriptorOfPage(0, page);
    bench.push(sample);
  }
  bench.finish();
  EXPECT_THAT(bench.logger.take(), ElementsAre("2 No Teletext descriptor detected",
                                               "2 Teletext descriptor(s) detected : [eng, 888] ",
                                               "2 => Follow language eng on page 888",
                                               "2 Teletext descriptor(s) detected : [eng, 877] ",
                                               "2 => Follow language eng on page 877"));
  CMediaType type;
  bench.filterPin(PINDIR_INPUT)->ConnectionMediaType(&type);
  ASSERT_EQ(type.cbFormat, 7u);
  EXPECT_EQ(type.pbFormat[6], 0x77) << "the sample's type is the connection's now";
}

TEST(Streaming, KeepsTheChainOfOtherStreamsWhateverTheirFormatBlock) {
  GraphTestBench bench({});
  ASSERT_GE(bench.run(), 0);
  InputSample sample = captionText(1, "Hello");
  bench.push(sample);
  sample = captionSample(3, kNoCaption);
  sample.format = {1, 2, 3};
  bench.push(sample);
  bench.finish();
  ASSERT_EQ(bench.received().size(), 1u);
  EXPECT_THAT(bench.received()[0].data, HasSubstr("Hello"));
}

TEST(Streaming, GoesOnWithoutOutputInAModeThatMakesNoText) {
  GraphTestBench bench({});
  bench.configure({.mode = ConversionMode::BurnIntoVideo});
  bench.logger.take();
  EXPECT_GE(bench.run(), 0);
  EXPECT_EQ(bench.source->push(captionSample(1, kNoCaption)), S_OK);
  bench.finish();
  EXPECT_THAT(bench.logger.take(), ElementsAre("0 Error: Unexpected subtitle conversion mode",
                                               "0 Error: Unexpected subtitle conversion mode"))
      << "once for Pause, once for the sample";
  EXPECT_TRUE(bench.received().empty());
}

TEST(Streaming, TakesANewConfigurationWhenItNextStarts) {
  GraphTestBench bench({});
  ASSERT_GE(bench.run(), 0);
  bench.configure({.page = 2});
  bench.push(captionText(1, "first"));
  bench.push(captionSample(3, kNoCaption));
  bench.finish();
  ASSERT_EQ(bench.stop(), S_OK);
  ASSERT_GE(bench.run(), 0);
  bench.push(captionText(1, "first"));
  bench.push(captionSample(3, kNoCaption));
  bench.finish();
  ASSERT_EQ(bench.received().size(), 2u);
  EXPECT_THAT(bench.received()[0].data, HasSubstr("first"));
  EXPECT_EQ(bench.received()[1].data, "") << "the second service has no captions";
}

}  // namespace
}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
