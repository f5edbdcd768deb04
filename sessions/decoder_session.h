// SPDX-License-Identifier: MIT

// Systems that the filter does not have: digital captions and the subtitles of discs.
#pragma once

#include <memory>

#include "cues/cue_recorder.h"
#include "model/display.h"
#include "sessions/service_session.h"

namespace korr::txsub {

/// Whether a service is of such a system.
bool hasDecoderOfItsOwn(const Service& service);

/// The decoder of such a service, which shows it as a receiver or a player does. `wholeRows`: rows
/// of digital captions are told when they are written as a whole. Nothing is owned.
std::unique_ptr<encoding::subtitling::IDisplayDecoder> createDecoder(
    const Service& service, bool wholeRows, encoding::subtitling::IDisplayListener& listener,
    log::ILogger& logger);

/// Says where a message of a decoder belongs.
class PlacedLogger final : public log::ILogger {
 public:
  PlacedLogger(ISessionMonitor& monitor, std::uint32_t pid)
      : monitor_(monitor), place_{.pid = pid} {}

  void setTime(MediaTime time) { place_.time = time; }
  void logV(log::Level level, const char* format, std::va_list arguments) override;
  void nameBufferCounters(const char*) override {}

 private:
  ISessionMonitor& monitor_;
  Place place_;
};

/// The cues of one service with a decoder of its own.
class DecoderSession final : public ServiceSession {
 public:
  /// `segment` as `CueRecorder` takes it; `monitor` is not owned.
  DecoderSession(const Service& service, MediaTime segment, std::unique_ptr<ICueOutput> output,
                 ISessionMonitor& monitor);

  void push(const InputSample& sample, const SharedSample& shared) override;
  bool hasShown() const override { return recorder_.hasShown(); }
  void endInput(MediaTime end) override;
  void flush() override { output_->flush(); }
  HostCounters counters() const override { return counters_; }
  std::optional<CueTally> tally() const override { return recorder_.tally(); }
  void commit() override { output_->commit(); }

 private:
  void openOutput() override { output_->open(); }

  MediaTime lastTime_ = 0;  // of the samples so far
  std::unique_ptr<ICueOutput> output_;
  CueRecorder recorder_;
  PlacedLogger logger_;
  std::unique_ptr<encoding::subtitling::IDisplayDecoder> decoder_;
  HostCounters counters_;
};

}  // namespace korr::txsub
