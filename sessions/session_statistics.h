// SPDX-License-Identifier: MIT

// What passed through a session, for whoever asks with --stats.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "model/modes.h"
#include "sessions/service_session.h"

namespace korr::txsub {

/// "subtitle_converter_WebVTT, CC1 of PID 0x0100: 1800 samples, ...". Documents of playable files
/// have no bytes: the files are written from the subtitles themselves.
std::string statisticsText(const ServiceSession& session,
                           encoding::subtitling::ConversionMode mode);

/// The same as one JSON object, with the file that the session went into (UTF-8; empty:
/// it showed nothing) and its cues; their times in seconds from `origin` (100 ns).
nlohmann::ordered_json statisticsJson(const ServiceSession& session,
                                      encoding::subtitling::ConversionMode mode,
                                      const std::string& file, MediaTime origin);

}  // namespace korr::txsub
