// SPDX-License-Identifier: MIT
#include "concurrency/sample_pool.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>
#include <vector>

#include "concurrency/generation_queue.h"

namespace korr::concurrency {
namespace {

struct Node {
  Node* next = nullptr;
  int content = 0;
};

TEST(SamplePool, LendsEachNodeToOneAtATimeAndPassesOnWhatIsWritten) {
  constexpr int kLoans = 50'000;
  std::array<Node, 8> nodes;
  SamplePool<Node> pool;
  for (auto& node : nodes) pool.add(node);
  EXPECT_EQ(pool.tryTake(), nullptr) << "closed";
  pool.open();
  GenerationQueue<Node*> queue;
  std::thread downstream([&] {
    for (int i = 0; i < kLoans; ++i) {
      queue.semaphore().acquire();
      Node* const node = queue.take()->item;
      EXPECT_EQ(node->content, i);
      node->content = -1;
      EXPECT_FALSE(pool.giveBack(*node));
    }
  });
  for (int i = 0; i < kLoans; ++i) {
    Node* const node = pool.take();
    ASSERT_NE(node, nullptr);
    EXPECT_LE(node->content, 0) << "nobody else has it";
    node->content = i;
    queue.push(node);
  }
  downstream.join();
  EXPECT_EQ(pool.out(), 0u);
}

TEST(SamplePool, EndsEveryWaitWhenItIsClosed) {
  std::array<Node, 2> nodes;
  SamplePool<Node> pool;
  for (auto& node : nodes) pool.add(node);
  for (int i = 0; i < 50; ++i) {
    pool.open();
    std::vector<std::thread> takers;
    for (int taker = 0; taker < 3; ++taker) {
      takers.emplace_back([&pool] {
        while (Node* const node = pool.take()) {
          ++node->content;
          static_cast<void>(pool.giveBack(*node));
        }
      });
    }
    std::this_thread::yield();
    Node* const held = pool.take();
    pool.close();
    for (auto& taker : takers) taker.join();
    ASSERT_EQ(pool.out(), 1u);
    static_cast<void>(pool.giveBack(*held));
  }
}

TEST(SamplePool, IsEndedByOneOfThoseWhoLetGoAtTheSameTime) {
  for (int i = 0; i < 500; ++i) {
    std::array<Node, 2> nodes;
    auto* const pool = new SamplePool<Node>;
    for (auto& node : nodes) pool->add(node);
    pool->open();
    Node* const first = pool->take();
    Node* const second = pool->take();
    std::atomic<int> ends = 0;
    const auto endIf = [&](bool isLast) {
      if (!isLast) return;
      delete pool;
      ++ends;
    };
    std::thread one([&] { endIf(pool->giveBack(*first)); });
    std::thread other([&] { endIf(pool->giveBack(*second)); });
    endIf(pool->orphan());
    one.join();
    other.join();
    ASSERT_EQ(ends, 1);
  }
}

}  // namespace
}  // namespace korr::concurrency
