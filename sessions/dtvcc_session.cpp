// SPDX-License-Identifier: MIT
#include "sessions/dtvcc_session.h"

#include <algorithm>

namespace korr::txsub {

DtvccSession::DtvccSession(const Service& service, MediaTime segment,
                           std::unique_ptr<ICueOutput> output, log::ILogger& logger)
    : ServiceSession(service),
      output_(std::move(output)),
      recorder_(*output_, segment),
      decoder_({.service = digitalService(service).value_or(1),
                .charset = service.charset,
                .isWide = service.isWide},
               recorder_, &logger) {
}

void DtvccSession::push(const InputSample& sample, const SharedSample&) {
  if (!sample.times) return;
  lastTime_ = std::max(lastTime_, sample.times->start);
  decoder_.decode(sample.data, sample.times->start);
  ++counters_.samples;
}

void DtvccSession::endInput(MediaTime end) {
  end = std::max(end, lastTime_);
  decoder_.finish(end);
  recorder_.finish(end);
}

}  // namespace korr::txsub
