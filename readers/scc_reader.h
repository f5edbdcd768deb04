// SPDX-License-Identifier: MIT

// Caption files in the Scenarist format.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "readers/line_reader.h"
#include "readers/media_reader.h"

namespace korr::txsub {

/// The frame that a SMPTE time code (SMPTE ST 12-1) names at 29.97 frames a second, counted from
/// 00:00:00:00: "HH:MM:SS:FF" counts every frame, "HH:MM:SS;FF" is drop-frame and leaves two
/// numbers out each minute but every tenth. Nothing when it is no time code.
std::optional<std::uint64_t> frameOfTimeCode(std::string_view timeCode);

/// Reads an SCC file: lines of a time code and the byte pairs of field 1 that are sent from then
/// on, one pair a frame. A line whose turn has not come when the pairs of the line before are still
/// being sent waits for them. Lines that cannot be read are reported by number and left out.
///
/// Recordings customarily start at a whole hour, so that is where times count from: a first line at
/// 01:00:02:00 lies two seconds after the start.
class SccReader final : public IMediaReader {
 public:
  static constexpr std::string_view kHeader = "Scenarist_SCC V1.0";

  /// Throws util::TessaryException from `read` when the input does not begin with the header.
  SccReader(std::unique_ptr<IByteSource> source, const ReaderOptions& options);

  bool read(IReaderListener& listener) override;
  void unselect(std::uint32_t streamId) override;
  ReadProgress progress() const override { return lines_.progress(); }
  std::optional<MediaTime> startTime(std::uint32_t program) const override;
  std::optional<MediaTime> endTime(std::uint32_t program) const override;

 private:
  void readLine(const LineReader::Line& line, IReaderListener& listener);
  void readHeader(std::string_view line);
  void readPairs(std::string_view line, IReaderListener& listener);
  void sendLine(std::uint64_t frame, IReaderListener& listener);
  void leaveOut(std::string_view word, const char* why);

  LineReader lines_;
  log::ILogger* logger_;
  StreamInfo stream_;
  bool isAnnounced_ = false;
  bool isWanted_ = true;
  bool isHeaderSeen_ = false;
  std::uint64_t lineNumber_ = 0;

  std::vector<std::uint8_t> triplets_;       // of the current line
  std::optional<std::uint64_t> startFrame_;  // the whole hour before the first line
  std::uint64_t lineFrame_ = 0;              // of the last good line
  std::uint64_t nextFrame_ = 0;              // not yet taken by a pair
};

}  // namespace korr::txsub
