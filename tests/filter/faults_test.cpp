// SPDX-License-Identifier: MIT

// What goes wrong around the filter, and that nothing hangs, leaks or crashes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <new>
#include <thread>

#include "tests/filter/graph_test_bench.h"
#include "tests/filter/hooked_allocator.h"

namespace {

// How many of this thread's next allocations fail, after the first few that succeed.
thread_local int allocationsToPass = 0;
thread_local int allocationsToFail = 0;

}  // namespace

[[gnu::noinline]] void* operator new(std::size_t size) {
  if (allocationsToFail > 0 && allocationsToPass-- <= 0) {
    --allocationsToFail;
    throw std::bad_alloc();
  }
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}

// What is used after it was freed shall not go unnoticed.
[[gnu::noinline]] void operator delete(void* memory, std::size_t size) noexcept {
  if (memory) std::memset(memory, 0xDD, size);
  std::free(memory);
}

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

// Captions that change with every sample, a tenth of a second apart, until `until` answers true or
// the source is stopped.
template <class Until>
void pushCaptions(GraphTestBench& bench, Until until) {
  for (int i = 1; !until(); ++i) {
    const HRESULT result = bench.source->push(captionText(0.1 * i, i % 2 == 0 ? "even" : "odd"));
    if (FAILED(result)) std::this_thread::yield();
  }
}

// A sink that keeps every buffer, under a worker that waits for one more.
class BuffersAllHeld {
 public:
  /// The bench's output is connected to `allocator`.
  BuffersAllHeld(GraphTestBench& bench, const HookedAllocator& allocator) {
    bench.onReceive = [this](IMediaSample& sample) {
      kept_.emplace_back(&sample);
      return S_OK;
    };
    upstream_ = std::jthread([&bench](const std::stop_token& token) {
      pushCaptions(bench, [&] { return token.stop_requested(); });
    });
    constexpr int kBuffers = 128;
    while (allocator.asked <= kBuffers) std::this_thread::sleep_for(1ms);
  }

  /// Ends what comes from upstream, and gives the buffers back.
  void letGo() {
    upstream_.request_stop();
    upstream_.join();
    kept_.clear();
  }

 private:
  std::vector<ComPtr<IMediaSample>> kept_;
  std::jthread upstream_;
};

TEST(Faults, StopsWhileTheSinkHoldsEveryBuffer) {
  HookedAllocator allocator;
  GraphTestBench bench({.mode = ConversionMode::Ttml});
  bench.reconnectOutput(allocator);
  ASSERT_GE(bench.run(), 0);
  BuffersAllHeld held(bench, allocator);
  EXPECT_EQ(bench.filter->Stop(), S_OK);
  bench.stop();
  held.letGo();
}

TEST(Faults, StopsWhileTheSinkBlocksAndLeavesNothingOfBefore) {
  std::atomic<bool> isBlocked = false;
  HookedAllocator allocator;
  GraphTestBench bench({});
  bench.reconnectOutput(allocator);
  bench.onReceive = [&](IMediaSample&) {
    isBlocked = true;
    // As a renderer that waits for its time; but a little longer, so that the filter is stopping.
    while (!allocator.isDecommitted) std::this_thread::sleep_for(1ms);
    return S_FALSE;
  };
  ASSERT_GE(bench.run(), 0);
  bench.push(captionText(1, "Hello"));
  bench.push(captionSample(3));
  while (!isBlocked) std::this_thread::sleep_for(1ms);
  for (int second = 4; second < 20; ++second) bench.push(captionText(second, "waiting"));
  EXPECT_EQ(bench.stop(), S_OK);
  bench.onReceive = nullptr;
  bench.configure({.page = 2});  // for the chain that is built next
  bench.play({captionText(31, "Hello"), captionSample(33)});
  ASSERT_EQ(bench.received().size(), 1u);
  EXPECT_EQ(bench.received()[0].data, "") << "the second service has no captions";
}

TEST(Faults, FlushesWhileTheSinkBlocks) {
  GraphTestBench bench({.durationMs = 1});  // a thousand documents a second
  std::atomic<bool> isBlocked = false;
  bench.onReceive = [&](IMediaSample&) {
    isBlocked = true;
    auto& pin = static_cast<CBaseInputPin&>(*bench.sink->GetPin(0));
    while (!pin.IsFlushing()) std::this_thread::sleep_for(1ms);
    return S_FALSE;
  };
  ASSERT_GE(bench.run(), 0);
  bench.push(captionText(1, "Hello"));
  bench.push(captionSample(80'000));
  while (!isBlocked) std::this_thread::sleep_for(1ms);
  EXPECT_EQ(bench.source->beginFlush(), S_OK);
  EXPECT_EQ(bench.source->endFlush(), S_OK);
  bench.onReceive = nullptr;
  bench.play({captionText(1, "Hello")});
}

TEST(Faults, FlushesWhileTheSinkHoldsEveryBuffer) {
  HookedAllocator allocator;
  GraphTestBench bench({.mode = ConversionMode::Ttml});
  bench.reconnectOutput(allocator);
  ASSERT_GE(bench.run(), 0);
  BuffersAllHeld held(bench, allocator);
  EXPECT_EQ(bench.source->beginFlush(), S_OK);
  held.letGo();
  EXPECT_EQ(bench.source->endOfStream(), S_OK);  // late, so it is of before the flush
  EXPECT_EQ(bench.source->endFlush(), S_OK);
  bench.onReceive = nullptr;
  const std::size_t before = bench.received().size();
  bench.play({captionText(1, "Hello"), captionSample(4)});
  EXPECT_GT(bench.received().size(), before);
}

TEST(Faults, LogsASinkThatRefusesAndGoesOn) {
  GraphTestBench bench({});
  bench.onReceive = [](IMediaSample&) { return VFW_E_SAMPLE_REJECTED; };
  bench.play({captionText(1, "Hello"), captionSample(9)});
  EXPECT_THAT(bench.logger.take(), ElementsAre(StartsWith("0 Internal error (0x8004022b): ")))
      << "one for the sample, not one for each of its four segments";
  bench.onReceive = [](IMediaSample&) { return VFW_E_WRONG_STATE; };  // as the graph stops
  bench.play({captionText(10, "Hello"), captionSample(19)});
  EXPECT_THAT(bench.logger.take(), IsEmpty());
}

TEST(Faults, RunsWithoutASink) {
  GraphTestBench bench({});
  ASSERT_EQ(bench.graph->Disconnect(bench.filter->GetPin(1)), S_OK);
  ASSERT_EQ(bench.graph->Disconnect(bench.sink->GetPin(0)), S_OK);
  ASSERT_GE(bench.run(), 0);
  bench.push(captionText(1, "Hello"));
  bench.push(captionSample(2));
  EXPECT_EQ(bench.source->endOfStream(), S_OK);
  EXPECT_EQ(bench.stop(), S_OK);
}

TEST(Faults, PassesOverSamplesWithoutDataOrTimeOrWithABadType) {
  GraphTestBench bench({});
  ASSERT_GE(bench.run(), 0);
  bench.push(captionText(1, "Hello"));
  bench.push(captionSample(2, {}));
  InputSample untimed = captionText(0, "untimed");
  untimed.times.reset();
  bench.push(untimed);
  bench.push(captionSample(3, {0xFC}));  // a third of a triplet
  bench.pushWithUnknownFormatType(captionSample(4));
  bench.push(captionSample(5));
  bench.finish();
  EXPECT_THAT(bench.logger.take(),
              Contains(StartsWith("0 Internal error (0x80004005): ")).Times(1));
  ASSERT_FALSE(bench.received().empty());
  EXPECT_EQ(bench.received().back().stop, 50'000'000u);
}

TEST(Faults, SurvivesStateChangesAndConfigurationsUnderLoad) {
  GraphTestBench bench({.mode = ConversionMode::Ttml});
  std::atomic<bool> isDone = false;
  std::jthread upstream([&] { pushCaptions(bench, [&] { return isDone.load(); }); });
  std::jthread configuring([&] {
    for (std::uint32_t i = 0; !isDone; ++i) {
      bench.configure({.mode = i % 2 == 0 ? ConversionMode::Ttml : ConversionMode::WebVtt,
                       .durationMs = i % 5,
                       .language = std::string(i % 50, 'x')});
      bench.filter->SetLogger(i % 3 == 0 ? nullptr : &bench.logger);
      std::this_thread::sleep_for(100us);
    }
  });
  for (int i = 0; i < 1000; ++i) {
    ASSERT_GE(bench.pause(), 0) << i;
    ASSERT_GE(bench.run(), 0) << i;
    ASSERT_EQ(bench.stop(), S_OK) << i;
  }
  isDone = true;
}

TEST(Faults, LeavesNoHandlesBehind) {
  // A new handle gets the lowest value that is free, so the last of many tells of those that were
  // left open. (Wine does not count a process's handles.)
  const auto hundredthFree = [] {
    std::array<HANDLE, 100> handles{};
    for (HANDLE& handle : handles) handle = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    for (const HANDLE handle : handles) CloseHandle(handle);
    return reinterpret_cast<std::intptr_t>(handles.back());
  };
  const auto lostBy = [&](const auto& action) {
    action();
    const auto before = hundredthFree();
    for (int i = 0; i < 20; ++i) action();
    return hundredthFree() - before;
  };
  const auto lostByGraph = lostBy([] {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    ComPtr<IGraphBuilder> graph;
    CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&graph));
    graph.Reset();
    CoUninitialize();
  });
  const auto lost = lostBy([] {
    GraphTestBench bench({});
    bench.play({captionText(1, "Hello")});
  });
  constexpr std::intptr_t kStep = 4;  // between one handle and the next
  EXPECT_LT(lost, lostByGraph + 10 * kStep) << "the platform's graph loses some by itself";
}

/// Throws whatever it is told.
class ThrowingLogger final : public mqs_subtitle_converter::ILogger {
 public:
  void STDMETHODCALLTYPE Log(std::uint32_t, const char*, std::va_list) override { throw 42; }
  void STDMETHODCALLTYPE NameBufferCounters(const char*) override { throw std::bad_alloc(); }
};

TEST(Faults, SurvivesALoggerThatThrows) {
  ThrowingLogger thrower;
  GraphTestBench bench({.isTeletext = true, .page = 0x888});
  bench.filter->SetLogger(&thrower);
  ASSERT_GE(bench.run(), 0);
  bench.pushWithUnknownFormatType(captionSample(4));
  bench.finish();
}

TEST(Faults, AnswersExhaustedMemoryOnAHostsThread) {
  GraphTestBench bench({});
  ASSERT_GE(bench.run(), 0);
  allocationsToFail = 1;
  const HRESULT configured = bench.filter->SetConfiguration(4, 1, 2000, "eng", 0, 0, 0);
  EXPECT_EQ(allocationsToFail, 0);
  EXPECT_EQ(configured, E_OUTOFMEMORY);

  // The queue does not allocate for every sample.
  const InputSample sample = captionSample(1);
  HRESULT pushed = S_OK;
  for (int i = 0; i < 1000 && pushed == S_OK; ++i) {
    allocationsToFail = 1;
    pushed = bench.source->push(sample);
  }
  allocationsToFail = 0;
  EXPECT_EQ(pushed, E_OUTOFMEMORY);
  bench.finish();
}

TEST(Faults, LogsExhaustedMemoryOnTheWorkerAndGoesOn) {
  GraphTestBench bench({});
  std::atomic<int> pass = 0;
  bench.onReceive = [&](IMediaSample&) {
    allocationsToPass = pass++;
    allocationsToFail = 1;
    return S_OK;
  };
  ASSERT_GE(bench.run(), 0);
  for (int i = 1; i < 40; ++i) bench.push(captionText(i, "Hello"));
  bench.finish();
  EXPECT_GT(pass, 5) << "documents keep coming";
  EXPECT_THAT(bench.logger.take(), Contains("0 Error: std::bad_alloc"));
}

}  // namespace
}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
