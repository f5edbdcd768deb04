// SPDX-License-Identifier: MIT

// Services to sessions.
#pragma once

#include <memory>

#include "sessions/service_session.h"

namespace korr::txsub {

/// The session that makes cues of a service, whichever system it belongs to. Digital captions are
/// always shown by a receiver's rules: the filter has none.
std::unique_ptr<ServiceSession> createCueSession(const Service& service,
                                                 const CueSession::Settings& settings,
                                                 std::unique_ptr<ICueOutput> output,
                                                 ISessionMonitor& monitor);

}  // namespace korr::txsub
