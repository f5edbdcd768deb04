#include "filter/worker.h"

#include <objbase.h>

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

Worker::Worker(CountingSemaphore& semaphore, std::function<void()> job)
    : stopEvent_(CreateEventW(nullptr, FALSE, FALSE, nullptr)),
      thread_([this, &semaphore, job = std::move(job)] { run(semaphore, job); }) {
}

Worker::~Worker() {
  isStopping_ = true;
  SetEvent(stopEvent_.get());
  thread_.join();
}

void Worker::run(CountingSemaphore& semaphore, const std::function<void()>& job) {
  // Downstream filters are called on this thread and may want COM.
  const HRESULT initialised = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  while (!isStopping_ && semaphore.acquireUnless(stopEvent_.get())) job();
  if (SUCCEEDED(initialised)) CoUninitialize();
}

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
