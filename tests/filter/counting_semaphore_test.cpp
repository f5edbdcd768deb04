#include "filter/counting_semaphore.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter {
namespace {

TEST(CountingSemaphore, GivesEveryCountOnceWhileOthersPoll) {
  constexpr int kCounts = 100'000;
  CountingSemaphore semaphore;
  const Handle stop(CreateEventW(nullptr, FALSE, FALSE, nullptr));
  std::atomic<int> taken = 0;
  std::thread waiter([&] {
    while (semaphore.acquireUnless(stop.get())) ++taken;
  });
  std::thread poller([&] {
    while (taken < kCounts) {
      if (semaphore.tryAcquire()) ++taken;
    }
  });
  for (int i = 0; i < kCounts; ++i) {
    semaphore.release();
    if (i % 1000 == 0) Sleep(1);  // lets the waiter fall asleep
  }
  poller.join();
  EXPECT_FALSE(semaphore.tryAcquire());
  SetEvent(stop.get());
  waiter.join();
  EXPECT_EQ(taken, kCounts);
}

TEST(CountingSemaphore, IsNotTakenByAWaitThatTheEventEnds) {
  CountingSemaphore semaphore;
  const Handle stop(CreateEventW(nullptr, FALSE, TRUE, nullptr));
  EXPECT_FALSE(semaphore.acquireUnless(stop.get()));
  semaphore.release();
  EXPECT_TRUE(semaphore.acquireUnless(stop.get()));
}

}  // namespace
}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter
