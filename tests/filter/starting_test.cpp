// SPDX-License-Identifier: MIT

// What one stream leaves for the next, and who starts it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "tests/filter/graph_test_bench.h"
#include "tests/filter/hooked_allocator.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;

TEST(Starting, FindsNothingOfBeforeAStopThatFailed) {
  HookedAllocator allocator;
  allocator.decommitAnswer = E_FAIL;
  GraphTestBench bench({});
  bench.reconnectOutput(allocator);
  bench.play({captionText(1, "before"), captionSample(3)});
  EXPECT_EQ(bench.filter->Stop(), E_FAIL);
  bench.stop();
  const std::size_t before = bench.received().size();
  for (int i = 0; i < 12; ++i) {
    bench.play({captionText(11, "Hello"), captionSample(13)});
    EXPECT_EQ(bench.filter->Stop(), E_FAIL);
    bench.stop();
  }
  const auto received = bench.received();
  ASSERT_EQ(received.size(), before + 12);
  for (std::size_t i = before; i < received.size(); ++i) {
    EXPECT_EQ(received[i].start, 110'000'000u);
    EXPECT_THAT(received[i].data, HasSubstr("Hello"));
  }
}

// The worker may be faster than whoever pauses the filter, which no test can time. A sink that
// stops and pauses it while the first pause tells of the segment leaves the same behind: a chain.
TEST(Starting, KeepsTheChainThatIsThereAlready) {
  GraphTestBench bench({.isTeletext = true});
  EXPECT_EQ(bench.source->newSegment(0, 1, 1.0), S_OK);
  bench.onNewSegment = [&bench](REFERENCE_TIME) {
    EXPECT_EQ(bench.filter->Stop(), S_OK);
    EXPECT_EQ(bench.filter->Pause(), S_OK);
  };
  ASSERT_GE(bench.pause(), 0);
  EXPECT_THAT(bench.logger.take(), ElementsAre("2 No Teletext descriptor detected"))
      << "as a chain is built";
}

TEST(Starting, ForgetsTheFormatBlockOfAnEarlierConnection) {
  GraphTestBench bench({.isTeletext = true, .language = "eng"});
  InputSample sample = captionSample(1);
  sample.format = {0x56, 5, 'e', 'n', 'g', 2 << 3 | 0, 0x88};
  bench.play({sample});
  bench.stop();
  IPin* const input = bench.filter->GetPin(0);
  bench.graph->Disconnect(input);
  bench.graph->Disconnect(bench.source->GetPin(0));
  ASSERT_EQ(bench.graph->ConnectDirect(bench.source->GetPin(0), input, nullptr), S_OK);
  bench.logger.take();
  bench.play({sample});
  EXPECT_THAT(bench.logger.take(), ElementsAre("2 No Teletext descriptor detected",
                                               "2 Teletext descriptor(s) detected : [eng, 888] ",
                                               "2 => Follow language eng on page 888"));
}

}  // namespace
}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
