// SPDX-License-Identifier: MIT

// The filter's one thread.
#pragma once

#include <atomic>
#include <functional>
#include <thread>

#include "concurrency/counting_semaphore.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

/// Runs a job once per count of a semaphore, on a thread of its own, which has ended when the
/// destructor returns.
class Worker {
 public:
  /// `semaphore` is not owned. `job` must not throw.
  Worker(concurrency::CountingSemaphore& semaphore, std::function<void()> job);
  ~Worker();
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

 private:
  void run(const std::function<void()>& job);

  concurrency::CountingSemaphore& semaphore_;
  std::atomic<bool> isStopping_ = false;
  std::thread thread_;
};

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
