// What the upstream thread leaves for the worker.
#pragma once

#include <dshow.h>
#include <streams.h>
#include <wrl/client.h>

#include <atomic>
#include <cstdint>
#include <deque>
#include <optional>

#include "filter/counting_semaphore.h"
#include "platform/cache_line.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

/// A queue of samples in arrival order, with a semaphore that counts them. Threads may share it.
class SampleQueue {
 public:
  struct Entry {
    Microsoft::WRL::ComPtr<IMediaSample> sample;  ///< null: end of stream
    std::uint32_t generation = 0;                 ///< how often the queue had been outdated
  };

  /// Takes a reference on `sample`; null marks the end of the stream.
  void push(IMediaSample* sample);

  /// The front entry; nothing when the queue has been drained in the meantime. Called once per
  /// count taken off the semaphore.
  std::optional<Entry> take();

  /// Whether `entry` has not been outdated since it was pushed.
  bool isCurrent(const Entry& entry) const { return entry.generation == generation_; }

  /// What has been pushed so far is not current any more.
  void outdate();

  /// Empties the queue, but for one entry whose count the worker has taken.
  void drain();

  /// Counts what there is to take.
  CountingSemaphore& semaphore() { return semaphore_; }

 private:
  std::optional<Entry> takeCounted();

  // Both threads touch all of this at every sample: it takes as few cache lines as it can.
  alignas(platform::kCacheLine) CountingSemaphore semaphore_;
  CCritSec lock_;  // upstream pushes, the worker takes, state changes drain
  std::atomic<std::uint32_t> generation_ = 0;  // written under the lock
  alignas(platform::kCacheLine) std::deque<Entry> entries_;
};

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
