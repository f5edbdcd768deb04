// SPDX-License-Identifier: MIT
#include "concurrency/generation_queue.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>
#include <vector>

namespace korr::concurrency {
namespace {

using Queue = GenerationQueue<std::unique_ptr<int>>;

TEST(GenerationQueue, HandsOverEveryItemInOrderAndWhatItsMakerWrote) {
  constexpr int kItems = 50'000;
  Queue queue;
  std::vector<int> taken;
  std::thread worker([&] {
    while (taken.size() < kItems) {
      queue.semaphore().acquire();
      taken.push_back(*queue.take()->item);
    }
  });
  for (int i = 0; i < kItems; ++i) queue.push(std::make_unique<int>(i));
  worker.join();
  for (int i = 0; i < kItems; ++i) ASSERT_EQ(taken[static_cast<std::size_t>(i)], i);
}

// A stop or a flush while the worker is busy and another thread still pushes.
TEST(GenerationQueue, ForgetsWhatWasPushedBeforeItWasOutdated) {
  Queue queue;
  std::atomic<int> floor = 0;  // items below were pushed before the last outdating began
  std::atomic<int> next = 0;
  std::atomic<bool> isDone = false;
  std::thread worker([&] {
    for (queue.semaphore().acquire(); !isDone; queue.semaphore().acquire()) {
      const auto entry = queue.take();
      const int known = floor;
      if (entry && queue.isCurrent(*entry)) {
        EXPECT_GE(*entry->item, known);
      }
    }
  });
  std::thread upstream([&] {
    while (!isDone) queue.push(std::make_unique<int>(next++));
  });
  for (int i = 0; i < 200; ++i) {
    const int pushed = next - 1;  // all but the last are in the queue
    queue.outdate();
    floor = pushed;
    queue.drain();
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  isDone = true;
  upstream.join();
  queue.semaphore().release();
  worker.join();
  queue.drain();
  EXPECT_FALSE(queue.take());
}

}  // namespace
}  // namespace korr::concurrency
