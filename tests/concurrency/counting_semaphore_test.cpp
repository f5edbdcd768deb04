// SPDX-License-Identifier: MIT
#include "concurrency/counting_semaphore.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace korr::concurrency {
namespace {

TEST(CountingSemaphore, GivesEveryCountOnceWhileAnotherPolls) {
  constexpr int kCounts = 100'000;
  CountingSemaphore semaphore;
  std::atomic<int> taken = 0;
  std::atomic<bool> isDone = false;
  std::thread waiter([&] {
    for (semaphore.acquire(); !isDone; semaphore.acquire()) ++taken;
  });
  std::thread poller([&] {
    while (taken < kCounts) {
      if (semaphore.tryAcquire()) ++taken;
    }
  });
  for (int i = 0; i < kCounts; ++i) {
    semaphore.release();
    if (i % 1000 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));  // waiter sleeps
  }
  poller.join();
  EXPECT_FALSE(semaphore.tryAcquire());
  isDone = true;
  semaphore.release();
  waiter.join();
  EXPECT_EQ(taken, kCounts);
}

}  // namespace
}  // namespace korr::concurrency
