// SPDX-License-Identifier: MIT

// Recorded samples in memory.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "readers/media_reader.h"

namespace korr::streaming::direct_show::host::inline v2_1 {

/// All samples of a recording, and what the graph needs to know of them beforehand.
struct Recording {
  txsub::SubtitleInputType type = txsub::SubtitleInputType::Teletext;
  std::vector<std::uint8_t> format;  ///< the format block of the connection
  std::vector<txsub::InputSample> samples;
};

/// Reads a .jsonl file (`path` in UTF-8). Throws util::TessaryException.
Recording readRecording(const std::string& path, log::ILogger* logger);

/// How many of a recording's samples a framer may hold at once: those of its longest unit.
std::size_t longestUnit(const Recording& recording);

/// The largest sample, in bytes.
std::size_t largestSample(const Recording& recording);

/// The sample that completes each unit, for the times at which units are: teletext and DVB units
/// are complete when the next begins.
struct UnitCompletion {
  txsub::MediaTime time = 0;
  std::size_t sample = 0;  ///< an index into the recording's samples
};
std::vector<UnitCompletion> unitCompletions(const Recording& recording);

}  // namespace korr::streaming::direct_show::host::inline v2_1
