#include "filter/sample_queue.h"

#include <limits>

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

SampleQueue::SampleQueue()
    : semaphore_(CreateSemaphoreW(nullptr, 0, std::numeric_limits<LONG>::max(), nullptr)) {
}

void SampleQueue::push(IMediaSample* sample) {
  const CAutoLock lock(&lock_);
  entries_.push_back({sample, generation_});
  ReleaseSemaphore(semaphore_.get(), 1, nullptr);
}

std::optional<SampleQueue::Entry> SampleQueue::take() {
  const CAutoLock lock(&lock_);
  if (entries_.empty()) return std::nullopt;
  std::optional<Entry> front(std::move(entries_.front()));
  entries_.pop_front();
  return front;
}

bool SampleQueue::isCurrent(const Entry& entry) {
  const CAutoLock lock(&lock_);
  return entry.generation == generation_;
}

void SampleQueue::drain() {
  std::deque<Entry> drained;  // ends after the lock: releasing a sample may call anywhere
  const CAutoLock lock(&lock_);
  ++generation_;
  while (WaitForSingleObject(semaphore_.get(), 0) == WAIT_OBJECT_0 && !entries_.empty()) {
    drained.push_back(std::move(entries_.front()));
    entries_.pop_front();
  }
}

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
