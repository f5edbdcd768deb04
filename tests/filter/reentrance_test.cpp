// SPDX-License-Identifier: MIT

// The sink calls back from within its own Receive, on the filter's worker: hosts must not, and yet
// nothing may be freed that is in use further up, and nothing old may come out later.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "tests/filter/graph_test_bench.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

/// Two thousand documents of one sample, in the first of which the sink calls `callBack`; then
/// another sample. Only what is of after the call may come out.
void expectNothingOldAfter(const std::function<void(GraphTestBench&)>& callBack) {
  GraphTestBench bench({.durationMs = 1});
  std::atomic<int> received = 0;
  std::atomic<bool> isBack = false;
  bench.onReceive = [&](IMediaSample&) {
    if (received++ != 0) return S_OK;
    callBack(bench);
    isBack = true;
    return S_FALSE;  // not kept
  };
  ASSERT_GE(bench.run(), 0);
  bench.push(captionText(1, "before"));
  bench.push(captionSample(3));
  while (!isBack) std::this_thread::sleep_for(1ms);
  bench.play({captionText(11, "after"), captionSample(11.002)});
  const auto documents = bench.received();
  ASSERT_EQ(documents.size(), 2u);
  for (const auto& document : documents) EXPECT_THAT(document.data, HasSubstr("after"));
}

TEST(Reentrance, StopsTheGraphOnceTheSinkReturns) {
  expectNothingOldAfter([](GraphTestBench& bench) { EXPECT_EQ(bench.stop(), S_OK); });
}

TEST(Reentrance, RestartsTheGraphOnceTheSinkReturns) {
  expectNothingOldAfter([](GraphTestBench& bench) {
    EXPECT_EQ(bench.stop(), S_OK);
    EXPECT_GE(bench.run(), 0);
  });
}

TEST(Reentrance, FlushesOnceTheSinkReturns) {
  expectNothingOldAfter([](GraphTestBench& bench) {
    EXPECT_EQ(bench.source->beginFlush(), S_OK);
    EXPECT_EQ(bench.source->endFlush(), S_OK);
  });
}

}  // namespace
}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
