// SPDX-License-Identifier: MIT

// A fixed set of samples that go out and come back.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>

#include "concurrency/cache_line.h"
#include "concurrency/spin.h"

namespace korr::concurrency::inline v2_1 {

/// Lends nodes, which it does not own, to any thread, and takes them back from any. A node has a
/// member `Node* next` for the pool's use. Closed at first: a closed pool lends nothing, and takes
/// back.
template <class Node>
class SamplePool {
 public:
  /// Adds a node. Only while closed and nothing is out.
  void add(Node& node) {
    node.next = free_;
    free_ = &node;
    fewOut_ = ++size_ / 4;
  }

  /// Forgets all nodes. Only while closed and nothing is out.
  void clear() {
    free_ = nullptr;
    returned_ = nullptr;
    size_ = 0;
  }

  void open() {
    const auto lock = lockSoon(mutex_);
    isOpen_ = true;
  }

  /// Ends every wait.
  void close() {
    const auto lock = lockSoon(mutex_);
    isOpen_ = false;
    isBack_.notify_all();
  }

  bool isOpen() const { return isOpen_; }

  /// How many nodes are out.
  std::uint64_t out() const { return taken_ - back_; }

  /// A node; null when all are out, or closed.
  [[nodiscard]] Node* tryTake() {
    const auto lock = lockSoon(mutex_);
    return isOpen_ ? takeFree() : nullptr;
  }

  /// Waits until a node is there; null when closed meanwhile.
  [[nodiscard]] Node* take() {
    if (Node* const node = tryTake()) return node;
    // Not for the first one back: who takes each at once disturbs who gives back.
    spinUntil([this] { return out() <= fewOut_ || !isOpen_; });
    return awaitFree();
  }

  /// Takes `node` back. True when it was the last one out of a pool without an owner: whoever gave
  /// it back ends the pool.
  [[nodiscard]] bool giveBack(Node& node) {
    node.next = returned_;
    while (!returned_.compare_exchange_weak(node.next, &node)) {
    }
    if (waiting_ != 0) {
      const auto lock = lockSoon(mutex_);
      isBack_.notify_one();
    }
    return back_.fetch_add(1) + 1 == kOrphaned;
  }

  /// Its owner lets go of the pool, and nothing is taken any more. True when nothing is out: the
  /// owner ends the pool. Otherwise `giveBack` says when: `back_` now tells how many are missing
  /// from `kOrphaned`.
  [[nodiscard]] bool orphan() {
    const std::uint64_t taken = taken_;
    return back_.fetch_add(kOrphaned - taken) == taken;
  }

 private:
  // Null when all are out. Under the lock.
  Node* takeFree() {
    if (!free_) free_ = returned_.exchange(nullptr);
    Node* const node = free_;
    if (!node) return nullptr;
    free_ = node->next;
    taken_.store(taken_ + 1);
    return node;
  }

  // Null when the pool is closed.
  Node* awaitFree() {
    auto lock = lockSoon(mutex_);
    Node* node = nullptr;
    ++waiting_;  // before the next look, so that nobody who gives back later fails to wake
    isBack_.wait(lock, [&] { return !isOpen_ || (node = takeFree()); });
    --waiting_;
    return node;
  }

  // In `back_`, less the nodes still out.
  static constexpr std::uint64_t kOrphaned = std::uint64_t{1} << 63;

  // Nodes come back without the lock, on a stack that a taker empties at once when it has used up
  // what it took before: whoever gives back and whoever takes seldom meet.
  alignas(kCacheLine) std::atomic<Node*> returned_ = nullptr;
  std::atomic<std::uint64_t> back_ = 0;  // how many nodes ever came back
  std::atomic<int> waiting_ = 0;         // threads that need to be woken

  // How many nodes ever went out; written under the lock.
  alignas(kCacheLine) std::atomic<std::uint64_t> taken_ = 0;
  std::atomic<std::uint64_t> fewOut_ = 0;  // a quarter of all: then a taker that waits goes on
  std::mutex mutex_;                       // over taking, and over what follows
  std::condition_variable isBack_;
  std::atomic<bool> isOpen_ = false;  // written under the lock
  std::uint64_t size_ = 0;
  Node* free_ = nullptr;  // the last one back goes out first: its memory is warm
};

}  // namespace korr::concurrency::inline v2_1
