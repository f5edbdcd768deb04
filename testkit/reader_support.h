// SPDX-License-Identifier: MIT

// Stand-ins for what is around a reader.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "readers/media_reader.h"

namespace korr::test_support {

/// Keeps the lines of a log.
class RecordingLogger final : public log::ILogger {
 public:
  void logV(log::Level, const char* format, std::va_list arguments) override {
    lines.push_back(util::vformat(format, arguments));
  }
  void nameBufferCounters(const char*) override {}

  std::vector<std::string> lines;
};

/// Wants every stream and keeps all that is reported.
class RecordingListener : public txsub::IReaderListener {
 public:
  bool onStream(const txsub::StreamInfo& stream) override {
    streams.push_back(stream);
    return true;
  }
  void onSample(const txsub::StreamInfo& stream, const txsub::InputSample& sample) override {
    samples.emplace_back(stream.id, sample);
  }

  std::vector<txsub::StreamInfo> streams;
  std::vector<std::pair<std::uint32_t, txsub::InputSample>> samples;  // by stream id
};

/// The characters of cc_data triplets, without their parity.
inline std::string textOf(std::span<const std::uint8_t> triplets) {
  std::string text;
  for (std::size_t i = 0; i + 2 < triplets.size(); i += 3) {
    text += static_cast<char>(triplets[i + 1] & 0x7F);
    text += static_cast<char>(triplets[i + 2] & 0x7F);
  }
  return text;
}

/// A reader at the end of its input, and all that it reported.
template <class Reader>
struct Reading {
  template <class Input>
  explicit Reading(Input input, txsub::ReaderOptions options = {})
      : reader(std::move(input), logged(options, logger)) {
    while (reader.read(listener)) {
    }
  }

  RecordingLogger logger;
  RecordingListener listener;
  Reader reader;

 private:
  static txsub::ReaderOptions logged(txsub::ReaderOptions options, RecordingLogger& logger) {
    options.logger = &logger;
    return options;
  }
};

/// Bytes in memory, given out at most `most` at a time.
class MemorySource final : public txsub::IByteSource {
 public:
  explicit MemorySource(std::string_view bytes, std::size_t most = SIZE_MAX)
      : bytes_(bytes), most_(most) {}
  explicit MemorySource(std::span<const std::uint8_t> bytes, std::size_t most = SIZE_MAX)
      : bytes_(bytes.begin(), bytes.end()), most_(most) {}

  /// Where there would be an end, reading fails.
  void breakAtEnd() { breaks_ = true; }

  std::size_t read(std::uint8_t* buffer, std::size_t size) override {
    const std::size_t count = std::min({size, most_, bytes_.size() - position_});
    if (count == 0 && breaks_) throw util::TessaryException("the disk is gone");
    std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(position_), count, buffer);
    position_ += count;
    return count;
  }
  std::optional<std::uint64_t> size() const override { return bytes_.size(); }

 private:
  std::string bytes_;
  std::size_t most_;
  bool breaks_ = false;
  std::size_t position_ = 0;
};

}  // namespace korr::test_support
