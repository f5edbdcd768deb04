// SPDX-License-Identifier: MIT

// One service under conversion.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "chain/display_chain.h"
#include "cues/cue.h"
#include "cues/cue_recorder.h"
#include "cues/growing_rows.h"
#include "files/sample_recorder.h"
#include "services/service.h"
#include "sessions/chain_host.h"

namespace korr::txsub {

using encoding::subtitling::DisplayRules;

/// Runs the chain of one service. What comes out is held until `open` names a place for it: which
/// of several services is wanted may show only in what they carry.
class ServiceSession {
 public:
  explicit ServiceSession(const Service& service) : service_(service) {}
  virtual ~ServiceSession() = default;
  ServiceSession(const ServiceSession&) = delete;
  ServiceSession& operator=(const ServiceSession&) = delete;

  const Service& service() const { return service_; }

  /// Only where no other service shows anything: pictures that must be read to become text.
  void setLastChoice() { isLastChoice_ = true; }
  bool isLastChoice() const { return isLastChoice_; }

  virtual void push(const InputSample& sample, const SharedSample& shared) = 0;

  /// Whether the service has shown anything, or is wanted all the same.
  virtual bool hasShown() const = 0;

  /// Whether pictures have come that time out at the moment that they are shown.
  virtual bool hasTimedOutAtOnce() const { return false; }

  /// Nothing follows; `end` is the end of the recording.
  virtual void endInput(MediaTime end) = 0;

  /// Opens the output; from now on nothing is held. Further calls do nothing.
  void open() {
    if (!isOpen_) openOutput();
    isOpen_ = true;
  }
  bool isOpen() const { return isOpen_; }

  /// Lets readers of a pipe see what has come out so far.
  virtual void flush() = 0;

  virtual HostCounters counters() const = 0;

  /// Of the cues so far; nothing where there are none by nature.
  virtual std::optional<CueTally> tally() const { return std::nullopt; }

  /// Gives the opened output its name.
  virtual void commit() = 0;

 private:
  virtual void openOutput() = 0;

  Service service_;
  bool isOpen_ = false;
  bool isLastChoice_ = false;
};

/// Cues, with all that the subtitles hold.
class CueSession final : public ServiceSession {
 public:
  struct Settings {
    ChainConfiguration configuration = {};
    FormatBlock format = std::nullopt;
    DisplayRules rules = DisplayRules::Receiver;
    /// Whether a viewer named the page; else it is what the service's declaration says.
    bool isAskedFor = false;
  };

  CueSession(const Service& service, const Settings& settings, std::unique_ptr<ICueOutput> output,
             ISessionMonitor& monitor);

  void push(const InputSample& sample, const SharedSample& shared) override;
  bool hasShown() const override { return recorder_.hasShown(); }
  bool hasTimedOutAtOnce() const override { return recorder_.hasTimedOutAtOnce(); }
  void endInput(MediaTime end) override;
  void flush() override { output_->flush(); }
  HostCounters counters() const override { return host_.counters(); }
  std::optional<CueTally> tally() const override { return recorder_.tally(); }
  void commit() override { output_->commit(); }

 private:
  void openOutput() override { output_->open(); }
  encoding::subtitling::IDisplayListener& display(DisplayRules rules);

  MediaTime lastTime_ = 0;  // of the samples so far
  std::unique_ptr<ICueOutput> output_;
  CueRecorder recorder_;
  std::optional<GrowingRows> rows_;  // where rows are told as they are written
  ChainHost host_;
};

/// The chain that tells `listener` what a service shows. Neither `listener` nor `logger` is owned.
std::unique_ptr<encoding::subtitling::DisplayChain> makeDisplayChain(
    encoding::subtitling::IDisplayListener& listener, const Service& service,
    const CueSession::Settings& settings, const ChainHost::ChainSettings& chain,
    log::ILogger* logger);

/// What the filter would deliver, to the letter: nothing is flushed at the end. `isCertain`: wanted
/// even when it shows nothing.
class SampleSession final : public ServiceSession {
 public:
  SampleSession(const Service& service, const ChainConfiguration& configuration, FormatBlock format,
                std::string path, bool isCertain, ISessionMonitor& monitor);

  void push(const InputSample& sample, const SharedSample& shared) override {
    host_.push(sample, shared);
  }
  bool hasShown() const override { return hasShown_; }
  void endInput(MediaTime) override { recorder_.endOfStream(); }
  void flush() override { recorder_.flush(); }
  HostCounters counters() const override { return host_.counters(); }
  void commit() override { recorder_.commit(); }

 private:
  class WatchedWriter;

  void openOutput() override { recorder_.open(path_); }

  std::string path_;
  bool hasShown_;
  SampleRecorder recorder_;
  ChainHost host_;
};

/// A sample as the framers hold it.
SharedSample share(const InputSample& sample);

}  // namespace korr::txsub
