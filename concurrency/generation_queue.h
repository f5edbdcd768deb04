// SPDX-License-Identifier: MIT

// What one thread leaves for another, and may take back.
#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

#include "concurrency/cache_line.h"
#include "concurrency/counting_semaphore.h"
#include "concurrency/spin.h"

namespace korr::concurrency::inline v2_1 {

/// A queue in arrival order, with a semaphore that counts what is in it. What has been pushed can
/// be outdated: it may still be taken, and whoever takes it can tell. Threads may share it; one of
/// them waits for the semaphore.
template <class Item>
class GenerationQueue {
 public:
  struct Entry {
    Item item;
    std::uint32_t generation = 0;  ///< how often the queue had been outdated
  };

  /// Throws std::bad_alloc, and has queued nothing then.
  void push(Item item) {
    const auto lock = lockSoon(mutex_);
    entries_.push_back({std::move(item), generation_});
    semaphore_.release();
  }

  /// The front entry; nothing when the queue has been drained in the meantime. Called once per
  /// count taken off the semaphore.
  [[nodiscard]] std::optional<Entry> take() {
    const auto lock = lockSoon(mutex_);
    return takeFront();
  }

  /// Whether `entry` has not been outdated since it was pushed.
  bool isCurrent(const Entry& entry) const { return entry.generation == generation_; }

  /// What has been pushed so far is not current any more.
  void outdate() {
    const auto lock = lockSoon(mutex_);
    ++generation_;
  }

  /// Empties the queue, but for one entry whose count the waiting thread has taken. One entry at a
  /// time: that needs no memory, and an item, whose end may call anywhere, ends outside the lock.
  void drain() {
    while (takeCounted()) {
    }
  }

  /// Counts what there is to take.
  CountingSemaphore& semaphore() { return semaphore_; }

 private:
  std::optional<Entry> takeFront() {
    if (entries_.empty()) return std::nullopt;
    std::optional<Entry> front(std::move(entries_.front()));
    entries_.pop_front();
    return front;
  }

  std::optional<Entry> takeCounted() {
    const auto lock = lockSoon(mutex_);
    return semaphore_.tryAcquire() ? takeFront() : std::nullopt;
  }

  // Both threads touch all of this for every entry: it takes as few cache lines as it can.
  alignas(kCacheLine) CountingSemaphore semaphore_;
  std::mutex mutex_;                           // one pushes, one takes, others outdate and drain
  std::atomic<std::uint32_t> generation_ = 0;  // written under the lock
  alignas(kCacheLine) std::deque<Entry> entries_;
};

}  // namespace korr::concurrency::inline v2_1
