// SPDX-License-Identifier: MIT

// Segments come out in their place among the samples.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

#include "tests/filter/graph_test_bench.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

/// Takes down what reaches the sink; `isHeld` keeps it waiting in Receive.
class Segments : public testing::Test {
 protected:
  Segments() {
    bench_.onNewSegment = [this](REFERENCE_TIME start) {
      note("segment " + std::to_string(start));
    };
    bench_.onReceive = [this](IMediaSample& sample) {
      isReceiving_ = true;
      while (isHeld_) std::this_thread::sleep_for(1ms);
      REFERENCE_TIME start = 0;
      REFERENCE_TIME stop = 0;
      sample.GetTime(&start, &stop);
      note("document at " + std::to_string(start / 10'000'000));
      return S_OK;
    };
  }

  void holdTheSink() {
    isHeld_ = true;
    bench_.push(captionText(1, "Hello"));
    bench_.push(captionSample(3));
    while (!isReceiving_) std::this_thread::sleep_for(1ms);
  }

  void note(const std::string& line) {
    const std::scoped_lock lock(mutex_);
    lines_.push_back(line);
  }

  std::mutex mutex_;
  std::vector<std::string> lines_;
  std::atomic<bool> isHeld_ = false;
  std::atomic<bool> isReceiving_ = false;
  GraphTestBench bench_{{}};
};

TEST_F(Segments, WaitForTheSamplesBeforeThem) {
  ASSERT_GE(bench_.run(), 0);
  holdTheSink();
  EXPECT_EQ(bench_.source->newSegment(70, 80, 1.0), S_OK);
  bench_.push(captionSample(5));
  isHeld_ = false;
  bench_.finish();
  EXPECT_THAT(lines_, ElementsAre("document at 1", "segment 70", "document at 3"));
}

TEST_F(Segments, AreToldAfterAFlushThatHasOvertakenThem) {
  ASSERT_GE(bench_.run(), 0);
  holdTheSink();
  EXPECT_EQ(bench_.source->newSegment(70, 80, 1.0), S_OK);
  EXPECT_EQ(bench_.source->beginFlush(), S_OK);
  isHeld_ = false;
  EXPECT_EQ(bench_.source->endFlush(), S_OK);
  bench_.play({captionText(11, "Hello"), captionSample(13)});
  EXPECT_THAT(lines_, ElementsAre("document at 1", "segment 70", "document at 11"));
}

TEST_F(Segments, AreToldWhenTheGraphStartsIfItWasStopped) {
  EXPECT_EQ(bench_.source->newSegment(70, 80, 1.0), S_OK);
  for (int i = 0; i < 2; ++i) {
    bench_.play({captionText(1, "Hello"), captionSample(3)});
    bench_.stop();
  }
  EXPECT_THAT(lines_, ElementsAre("segment 70", "document at 1", "document at 1"));
}

}  // namespace
}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
