#include "filter/sample_queue.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

void SampleQueue::push(IMediaSample* sample) {
  const CAutoLock lock(&lock_);
  entries_.push_back({sample, generation_});
  semaphore_.release();
}

std::optional<SampleQueue::Entry> SampleQueue::take() {
  const CAutoLock lock(&lock_);
  if (entries_.empty()) return std::nullopt;
  std::optional<Entry> front(std::move(entries_.front()));
  entries_.pop_front();
  return front;
}

void SampleQueue::outdate() {
  const CAutoLock lock(&lock_);
  ++generation_;
}

// One entry at a time: stopping must not need memory, and the end of a sample may call anywhere, so
// it comes after the lock.
void SampleQueue::drain() {
  while (takeCounted()) {
  }
}

std::optional<SampleQueue::Entry> SampleQueue::takeCounted() {
  const CAutoLock lock(&lock_);
  return semaphore_.tryAcquire() ? take() : std::nullopt;
}

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
