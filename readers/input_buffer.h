// SPDX-License-Identifier: MIT

// The bytes of an input between reading and using them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "readers/media_reader.h"

namespace korr::txsub {

/// Reads a source on piece by piece and keeps what has not been used. Not thread-safe.
class InputBuffer {
 public:
  /// `logger` is told when reading fails in the middle; null: nobody is.
  InputBuffer(std::unique_ptr<IByteSource> source, log::ILogger* logger)
      : source_(std::move(source)), logger_(logger) {}

  /// What has been read and not dropped; valid up to the next call of `fill`.
  std::span<const std::uint8_t> bytes() const {
    return std::span(buffer_).subspan(begin_, end_ - begin_);
  }

  /// Reads on, at most `most` bytes, and answers how many: 0 at the end, for good. Waits on a pipe
  /// for the first of them. An error of reading is the end, and is reported; one before the first
  /// byte throws util::TessaryException.
  std::size_t fill(std::size_t most);

  /// The first `count` bytes have been used.
  void drop(std::size_t count);

  /// Of `bytes()` in the input.
  std::uint64_t offset() const { return offset_; }

  bool isAtEnd() const { return isAtEnd_; }
  std::optional<std::uint64_t> size() const { return source_->size(); }

 private:
  std::unique_ptr<IByteSource> source_;
  log::ILogger* logger_;
  std::vector<std::uint8_t> buffer_;  // as large as it has ever had to be
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  std::uint64_t offset_ = 0;
  bool isAtEnd_ = false;
};

}  // namespace korr::txsub
