// What counts the queue's entries for the worker.
#pragma once

#include <windows.h>

#include <atomic>

#include "filter/handle.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

/// A counting semaphore, 0 at first, 2,147,483,647 at most. Threads may share it; one of them
/// waits.
///
/// The count is kept in the process. The kernel's semaphore behind it is only released to a thread
/// that sleeps on it, and a thread looks out for a count for some tens of microseconds before it
/// goes to sleep: under load neither side enters the kernel.
class CountingSemaphore {
 public:
  /// Throws HResultError when the system has no semaphore left.
  CountingSemaphore();

  /// Adds one.
  void release();

  /// Takes one if there is one, without waiting.
  bool tryAcquire();

  /// Waits until there is one and takes it; false when `event` is signalled meanwhile. One thread
  /// at a time.
  bool acquireUnless(HANDLE event);

 private:
  std::atomic<LONG> count_ = 0;  // -1 while a thread sleeps
  Handle sleeper_;
};

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
