// SPDX-License-Identifier: MIT
#include "txsub/commands/ocr_statistics.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "cues/cue_time.h"

namespace korr::txsub {

std::string ocrStatisticsText(const TranscriptStatistics& statistics) {
  const auto& reader = statistics.reader;
  return "read in " + statistics.language + ": " + std::to_string(reader.pictures) + " pictures, " +
         std::to_string(reader.lines) + " lines (" + std::to_string(reader.engineLines) +
         " by the engine), " + std::to_string(statistics.shapes) + " shapes; " +
         std::to_string(statistics.doubtful) + " of " + std::to_string(statistics.cues.size()) +
         " cues doubtful";
}

nlohmann::ordered_json ocrStatisticsJson(const TranscriptStatistics& statistics, MediaTime origin) {
  auto cues = nlohmann::ordered_json::array();
  for (const auto& cue : statistics.cues) {
    cues.push_back(
        {{"start",
          static_cast<double>(toMilliseconds(cue.start > origin ? cue.start - origin : 0)) / 1000},
         {"confidence", std::round(cue.confidence * 1000) / 1000}});
  }
  const auto& reader = statistics.reader;
  return {{"language", statistics.language}, {"pictures", reader.pictures},
          {"lines", reader.lines},           {"engineLines", reader.engineLines},
          {"unreadable", reader.unreadable}, {"shapes", statistics.shapes},
          {"doubtful", statistics.doubtful}, {"cues", std::move(cues)}};
}

}  // namespace korr::txsub
