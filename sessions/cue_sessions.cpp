// SPDX-License-Identifier: MIT
#include "sessions/cue_sessions.h"

#include "sessions/decoder_session.h"

namespace korr::txsub {

std::unique_ptr<ServiceSession> createCueSession(const Service& service,
                                                 const CueSession::Settings& settings,
                                                 std::unique_ptr<ICueOutput> output,
                                                 ISessionMonitor& monitor) {
  if (!hasDecoderOfItsOwn(service)) {
    return std::make_unique<CueSession>(service, settings, std::move(output), monitor);
  }
  const MediaTime segment = settings.configuration.durationMs * encoding::subtitling::kMillisecond;
  return std::make_unique<DecoderSession>(service, segment, std::move(output), monitor);
}

}  // namespace korr::txsub
