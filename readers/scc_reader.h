// SPDX-License-Identifier: MIT

// Caption files in the Scenarist format.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "readers/caption_lines_reader.h"

namespace korr::txsub {

/// The frame that a SMPTE time code (SMPTE ST 12-1) names at 29.97 frames a second, counted from
/// 00:00:00:00: "HH:MM:SS:FF" counts every frame, "HH:MM:SS;FF" is drop-frame and leaves two
/// numbers out each minute but every tenth. Nothing when it is no time code.
std::optional<std::uint64_t> frameOfTimeCode(std::string_view timeCode);

/// Reads an SCC file: lines of a time code and the byte pairs that are sent from then on, one pair
/// a frame. A line whose turn has not come when the pairs of the line before are still being sent
/// waits for them. Pairs belong to field 1 until a line has control codes of field 2 (CEA-608,
/// 8.4), as files of CC3 do, and so on.
class SccReader final : public CaptionLinesReader {
 public:
  static constexpr std::string_view kHeader = "Scenarist_SCC V1.0";

  SccReader(std::unique_ptr<IByteSource> source, const ReaderOptions& options);

 private:
  void readLine(std::string_view line, IReaderListener& listener) override;
  MediaTime timeOfFrame(std::uint64_t frame) const override;
  void sendLine(std::uint64_t frame, IReaderListener& listener);

  std::vector<std::uint8_t> triplets_;  // of the current line
  std::uint8_t field_ = 1;
  std::uint64_t lineFrame_ = 0;  // of the last good line
};

}  // namespace korr::txsub
