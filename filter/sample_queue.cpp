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

void SampleQueue::drain() {
  std::deque<Entry> drained;  // ends after the lock: releasing a sample may call anywhere
  const CAutoLock lock(&lock_);
  ++generation_;
  while (semaphore_.tryAcquire() && !entries_.empty()) {
    drained.push_back(std::move(entries_.front()));
    entries_.pop_front();
  }
}

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
