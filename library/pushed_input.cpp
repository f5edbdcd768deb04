// SPDX-License-Identifier: MIT
#include "library/pushed_input.h"

#include <algorithm>
#include <cstring>

namespace korr::txsub {

std::size_t PushedBytes::read(std::uint8_t* buffer, std::size_t size) {
  const std::size_t count = std::min(size - 1, waiting());
  if (count != 0) std::memcpy(buffer, waiting_.data() + used_, count);
  used_ += count;
  if (waiting() == 0) {
    waiting_.clear();
    used_ = 0;
  }
  return count;
}

bool PushedSamples::read(IReaderListener& listener) {
  if (!isWanted_) isWanted_ = listener.onStream(stream_);
  for (; !waiting_.empty(); waiting_.pop_front()) {
    const InputSample& sample = waiting_.front();
    if (!first_) first_ = sample.times->start;
    last_ = std::max(last_.value_or(0), sample.times->start);
    if (*isWanted_) listener.onSample(stream_, sample);
  }
  return true;
}

}  // namespace korr::txsub
