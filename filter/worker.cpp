// SPDX-License-Identifier: MIT
#include "filter/worker.h"

#include <objbase.h>

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

Worker::Worker(concurrency::CountingSemaphore& semaphore, std::function<void()> job)
    : semaphore_(semaphore), thread_([this, job = std::move(job)] { run(job); }) {
}

Worker::~Worker() {
  isStopping_ = true;
  semaphore_.release();  // wakes a worker that waits
  thread_.join();
}

void Worker::run(const std::function<void()>& job) {
  // Downstream filters are called on this thread and may want COM.
  const HRESULT initialised = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  for (semaphore_.acquire(); !isStopping_; semaphore_.acquire()) job();
  if (SUCCEEDED(initialised)) CoUninitialize();
}

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
