// SPDX-License-Identifier: MIT

// One service of a stream, while the programme runs.
#pragma once

#include <memory>
#include <vector>

#include "cues/growing_rows.h"
#include "dtvcc/dtvcc_display_decoder.h"
#include "sessions/service_session.h"
#include "streaming/display_cutter.h"

namespace korr::txsub {

/// Shows a service by a receiver's rules and cuts what it shows into segments. Nothing waits for
/// what comes later: units are decoded when they are whole, and rows are shown as they grow.
class StreamSession : public ServiceSession {
 public:
  using ServiceSession::ServiceSession;

  /// All that is shown in a segment, which has ended.
  std::vector<SegmentCue> cut(const Segment& segment);

  /// How many cues have begun in the segments so far.
  std::uint64_t cueCount() const { return cues_; }

  bool hasShown() const override { return cutter_.hasShown(); }
  void flush() override {}
  void commit() override {}

 protected:
  encoding::subtitling::IDisplayListener& display() { return rows_; }

  /// Letters that have waited for long enough are shown.
  void advance(MediaTime now) { rows_.advance(now); }

 private:
  /// What began before `until` is shown as far as it has come.
  virtual void settle(MediaTime until) = 0;
  void openOutput() override {}

  DisplayCutter cutter_;
  GrowingRows rows_{cutter_, GrowingRows::Output::Live};
  std::uint64_t cues_ = 0;
  std::uint32_t lastCue_ = 0;  // that has been counted
};

/// The session of a service, whichever system it belongs to. `monitor` is not owned.
std::unique_ptr<StreamSession> createStreamSession(const Service& service,
                                                   const CueSession::Settings& settings,
                                                   ISessionMonitor& monitor);

}  // namespace korr::txsub
