// SPDX-License-Identifier: MIT

#include "sessions/stream_sessions.h"

#include <algorithm>

#include "sessions/decoder_session.h"

namespace korr::txsub {

namespace {

/// Teletext, captions and DVB subtitles.
class ChainStreamSession final : public StreamSession {
 public:
  ChainStreamSession(const Service& service, const CueSession::Settings& settings,
                     ISessionMonitor& monitor)
      : StreamSession(service),
        host_(settings.configuration, service.type, settings.format,
              {.makeChain =
                   [this, settings](const ChainHost::ChainSettings& chain, log::ILogger* logger) {
                     return makeDisplayChain(display(), this->service(), settings, chain, logger);
                   },
               .monitor = monitor,
               .pid = service.pid}) {}

  void push(const InputSample& sample, const SharedSample& shared) override {
    host_.push(sample, shared);
    host_.completeUnit();
    if (sample.times) advance(sample.times->start);
  }

  void endInput(MediaTime end) override { host_.finish(end); }
  HostCounters counters() const override { return host_.counters(); }

 private:
  void settle(MediaTime until) override { host_.settle(until); }

  ChainHost host_;
};

/// Digital captions and the subtitles of discs.
class DecoderStreamSession final : public StreamSession {
 public:
  DecoderStreamSession(const Service& service, ISessionMonitor& monitor)
      : StreamSession(service),
        logger_(monitor, service.pid),
        decoder_(createDecoder(service, false, display(), logger_)) {}

  void push(const InputSample& sample, const SharedSample&) override {
    if (!sample.times) return;
    logger_.setTime(sample.times->start);
    decoder_->decode(sample.data, sample.times->start);
    advance(sample.times->start);
    ++counters_.samples;
  }

  void endInput(MediaTime end) override { decoder_->finish(end); }
  HostCounters counters() const override { return counters_; }

 private:
  void settle(MediaTime until) override { decoder_->settle(until); }

  PlacedLogger logger_;
  std::unique_ptr<encoding::subtitling::IDisplayDecoder> decoder_;
  HostCounters counters_;
};

}  // namespace

std::vector<SegmentCue> StreamSession::cut(const Segment& segment) {
  settle(segment.stop);
  rows_.settle(segment.stop);
  auto cues = cutter_.cut(segment);
  for (const auto& cue : cues) {
    if (cue.id > lastCue_) ++cues_;
    lastCue_ = std::max(lastCue_, cue.id);
  }
  return cues;
}

std::unique_ptr<StreamSession> createStreamSession(const Service& service,
                                                   const CueSession::Settings& settings,
                                                   ISessionMonitor& monitor) {
  if (hasDecoderOfItsOwn(service)) {
    return std::make_unique<DecoderStreamSession>(service, monitor);
  }
  return std::make_unique<ChainStreamSession>(service, settings, monitor);
}

}  // namespace korr::txsub
