// SPDX-License-Identifier: MIT

// What --stats says of pictures that were read.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "transcription/transcript.h"

namespace korr::txsub {

/// "read in fra: 312 pictures, 530 lines (41 by the engine), 388 shapes; 9 of 310 cues doubtful"
std::string ocrStatisticsText(const TranscriptStatistics& statistics);

/// The same with the confidence of every cue, its start in seconds from `origin`
/// (100 ns).
nlohmann::ordered_json ocrStatisticsJson(const TranscriptStatistics& statistics, MediaTime origin);

}  // namespace korr::txsub
