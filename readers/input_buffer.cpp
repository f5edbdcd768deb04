// SPDX-License-Identifier: MIT
#include "readers/input_buffer.h"

#include <algorithm>
#include <cinttypes>

#include "util/exception.h"

namespace korr::txsub {

std::size_t InputBuffer::fill(std::size_t most) {
  if (isAtEnd_) return 0;
  std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(begin_),
            buffer_.begin() + static_cast<std::ptrdiff_t>(end_), buffer_.begin());
  end_ -= begin_;
  begin_ = 0;
  if (buffer_.size() < end_ + most) buffer_.resize(end_ + most);

  std::size_t count = 0;
  try {
    count = source_->read(buffer_.data() + end_, most);
  } catch (const util::TessaryException& error) {
    if (offset_ + end_ == 0) throw;
    log::write(logger_, log::Level::Warning,
               "byte %" PRIu64 ": reading ends here: %s; what came before is kept", offset_ + end_,
               error.what());
  }
  end_ += count;
  isAtEnd_ = count == 0;
  return count;
}

void InputBuffer::drop(std::size_t count) {
  count = std::min(count, end_ - begin_);
  begin_ += count;
  offset_ += count;
}

}  // namespace korr::txsub
