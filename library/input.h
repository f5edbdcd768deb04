// SPDX-License-Identifier: MIT

// An input of the library: what reads it, and the cues that have come of it.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "library/cue_record.h"
#include "library/pushed_input.h"
#include "readers/open_input.h"
#include "sessions/service_pass.h"

namespace korr::txsub {

/// Throws util::TessaryException for a kind that does not exist.
SubtitleInputType typeOf(txsub_kind kind);

/// What an input was asked for.
struct InputRequest {
  ServiceQuery query;
  std::string language;  ///< ISO 639-2; empty: all
  std::optional<std::uint32_t> pid;
  bool keepsTimes = false;
  std::function<void(const std::string&)> warn;  ///< may be empty
};

/// Every service that is wanted, in one pass. Throws std::exception for what cannot be done, misuse
/// among it. Not thread-safe.
class LibraryInput final : private ISessionMonitor {
 public:
  explicit LibraryInput(InputRequest request);
  ~LibraryInput();
  LibraryInput(const LibraryInput&) = delete;
  LibraryInput& operator=(const LibraryInput&) = delete;

  // One of them comes first.
  void openFile(const std::string& path);
  void openStream();
  void openSamples(SubtitleInputType type, std::vector<std::uint8_t> descriptors);

  void push(std::span<const std::uint8_t> bytes);
  void pushSample(std::span<const std::uint8_t> bytes, MediaTime time);
  void end();

  /// The next cue; null when there is none, yet or at all.
  std::unique_ptr<CueRecord> next();

  /// Whether no cue comes any more.
  bool isAtEnd() const { return isComplete_ && cues_.empty(); }

  /// A service that has been found.
  struct Found {
    Service service;
    std::string name;
    txsub_service view{};
  };
  const std::deque<Found>& services() const { return services_; }

 private:
  class Output;

  void begin();
  std::unique_ptr<ServiceSession> makeSession(const Service& service);
  MediaTime originOf(const Service& service) const;
  void readOn();
  void complete();

  void warn(const std::string& message) const;
  void logV(log::Level level, const char* format, std::va_list arguments) override;
  void nameBufferCounters(const char*) override {}
  void report(log::Level level, const Place& place, const std::string& message) override;
  void chainError(const Place& place, const char* message) override;
  void detail(const std::string&) override {}
  void showProgress(const ReadProgress&) override {}
  void endProgress() override {}
  bool isStopWanted() const override { return false; }

  InputRequest request_;
  InputFormat format_ = InputFormat::Other;
  std::unique_ptr<IMediaReader> reader_;
  PushedBytes* bytes_ = nullptr;      // of the reader, where bytes are pushed
  PushedSamples* samples_ = nullptr;  // the reader, where samples are pushed
  std::unique_ptr<ServicePass> pass_;
  std::deque<Found> services_;
  std::deque<std::unique_ptr<CueRecord>> cues_;
  bool hasBegun_ = false;  // reading
  bool isEnded_ = false;   // nothing is pushed any more
  bool isComplete_ = false;
};

}  // namespace korr::txsub
