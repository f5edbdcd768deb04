// SPDX-License-Identifier: MIT

// Digital captions under conversion.
#pragma once

#include "cues/cue_recorder.h"
#include "dtvcc/dtvcc_display_decoder.h"
#include "sessions/service_session.h"

namespace korr::txsub {

/// The cues of one service of CEA-708, always as a receiver shows them: the filter has no digital
/// captions.
class DtvccSession final : public ServiceSession {
 public:
  /// `segment` as `CueRecorder` takes it; `logger` is not owned.
  DtvccSession(const Service& service, MediaTime segment, std::unique_ptr<ICueOutput> output,
               log::ILogger& logger);

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
  encoding::subtitling::dtvcc::DtvccDisplayDecoder decoder_;
  HostCounters counters_;
};

}  // namespace korr::txsub
