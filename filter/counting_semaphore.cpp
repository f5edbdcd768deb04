#include "filter/counting_semaphore.h"

#include <limits>

#include "platform/spin.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

CountingSemaphore::CountingSemaphore()
    : sleeper_(CreateSemaphoreW(nullptr, 0, std::numeric_limits<LONG>::max(), nullptr)) {
}

void CountingSemaphore::release() {
  if (count_.fetch_add(1) < 0) ReleaseSemaphore(sleeper_.get(), 1, nullptr);
}

bool CountingSemaphore::tryAcquire() {
  LONG count = count_.load();
  while (count > 0) {
    if (count_.compare_exchange_weak(count, count - 1)) return true;
  }
  return false;
}

bool CountingSemaphore::acquireUnless(HANDLE event) {
  platform::spinUntil([this] { return count_.load(std::memory_order_relaxed) > 0; });
  if (count_.fetch_sub(1) > 0) return true;
  const HANDLE either[] = {event, sleeper_.get()};
  return WaitForMultipleObjects(2, either, FALSE, INFINITE) == WAIT_OBJECT_0 + 1;
}

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
