#include "filter/worker.h"

#include <objbase.h>

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

Worker::Worker(HANDLE semaphore, std::function<void()> job)
    : stopEvent_(CreateEventW(nullptr, FALSE, FALSE, nullptr)),
      thread_([this, semaphore, job = std::move(job)] { run(semaphore, job); }) {
}

Worker::~Worker() {
  SetEvent(stopEvent_.get());
  thread_.join();
}

void Worker::run(HANDLE semaphore, const std::function<void()>& job) {
  // Downstream filters are called on this thread and may want COM.
  const HRESULT initialised = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  const HANDLE either[] = {stopEvent_.get(), semaphore};
  while (WaitForMultipleObjects(2, either, FALSE, INFINITE) == WAIT_OBJECT_0 + 1) job();
  if (SUCCEEDED(initialised)) CoUninitialize();
}

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
