// SPDX-License-Identifier: MIT

// Inputs whose bytes and samples are handed in.
#pragma once

#include <deque>
#include <memory>
#include <span>
#include <vector>

#include "readers/media_reader.h"

namespace korr::txsub {

/// Bytes that have been handed in and not been read.
class PushedBytes final : public IByteSource {
 public:
  void push(std::span<const std::uint8_t> bytes) {
    waiting_.insert(waiting_.end(), bytes.begin(), bytes.end());
  }
  std::size_t waiting() const { return waiting_.size() - used_; }

  /// One byte less than `size` at most, so that a reader which got all that it asked for does not
  /// take the next answer, nothing, for the end.
  std::size_t read(std::uint8_t* buffer, std::size_t size) override;
  std::optional<std::uint64_t> size() const override { return std::nullopt; }

 private:
  std::vector<std::uint8_t> waiting_;
  std::size_t used_ = 0;
};

/// The samples of one stream.
class PushedSamples final : public IMediaReader {
 public:
  explicit PushedSamples(StreamInfo stream) : stream_(std::move(stream)) {}

  void push(InputSample sample) { waiting_.push_back(std::move(sample)); }

  bool read(IReaderListener& listener) override;
  void unselect(std::uint32_t) override {}
  ReadProgress progress() const override { return {}; }
  std::optional<MediaTime> startTime(std::uint32_t) const override { return first_; }
  std::optional<MediaTime> endTime(std::uint32_t) const override { return last_; }

 private:
  StreamInfo stream_;
  std::deque<InputSample> waiting_;
  std::optional<bool> isWanted_;
  std::optional<MediaTime> first_;
  std::optional<MediaTime> last_;
};

}  // namespace korr::txsub
