// SPDX-License-Identifier: MIT

// Looking out for another thread before falling asleep.
#pragma once

#include <algorithm>
#include <mutex>

#if defined(__x86_64__) || defined(_M_X64)
#include <immintrin.h>
#endif

namespace korr::concurrency::inline v2_1 {

/// Tells the processor that this thread waits for another.
inline void pauseProcessor() {
#if defined(__x86_64__) || defined(_M_X64)
  _mm_pause();
#endif
}

/// Looks some tens of microseconds long whether `condition` has come true, which what another
/// thread is about to do mostly has by then; a thread that falls asleep costs both more. It looks
/// more and more seldom, so that it does not keep from the other thread what that has to write.
/// `condition` must not throw, and must see other threads' writes.
template <typename Condition>
bool spinUntil(Condition condition) {
  constexpr int kPauses = 2000;
  constexpr int kLongest = 64;  // pauses between two looks
  int length = 1;
  for (int pauses = 0; pauses < kPauses; pauses += length) {
    if (condition()) return true;
    length = std::min(2 * length, kLongest);
    for (int i = 0; i < length; ++i) pauseProcessor();
  }
  return false;
}

/// Locks a mutex that others only hold for moments.
inline std::unique_lock<std::mutex> lockSoon(std::mutex& mutex) {
  std::unique_lock lock(mutex, std::defer_lock);
  if (!spinUntil([&lock] { return lock.try_lock(); })) lock.lock();
  return lock;
}

}  // namespace korr::concurrency::inline v2_1
