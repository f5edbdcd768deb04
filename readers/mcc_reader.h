// SPDX-License-Identifier: MIT

// Caption files in the MacCaption format.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "readers/line_reader.h"
#include "readers/media_reader.h"
#include "util/time_code.h"

namespace korr::txsub {

/// Reads an MCC file, version 1 or 2: a line a picture, of a time code and an ancillary data packet
/// that holds all its captions, line 21 and digital ones. Lines that cannot be read are reported by
/// number and left out. Times count from the whole hour before the first line, as in SCC files.
class MccReader final : public IMediaReader {
 public:
  static constexpr std::string_view kHeader = "File Format=MacCaption_MCC V";

  /// Throws util::TessaryException from `read` when the input does not begin with the header.
  MccReader(std::unique_ptr<IByteSource> source, const ReaderOptions& options);

  bool read(IReaderListener& listener) override;
  void unselect(std::uint32_t streamId) override;
  ReadProgress progress() const override { return lines_.progress(); }
  std::optional<MediaTime> startTime(std::uint32_t program) const override;
  std::optional<MediaTime> endTime(std::uint32_t program) const override;

 private:
  void readLine(const LineReader::Line& line, IReaderListener& listener);
  void readRate(std::string_view value);
  void readPacket(std::string_view line, IReaderListener& listener);
  void takeRate(const util::TimeCodeRate& rate);
  void leaveOut(std::string_view word, const char* why);
  MediaTime timeOfFrame(std::uint64_t frame) const;

  LineReader lines_;
  log::ILogger* logger_;
  StreamInfo stream_;
  bool isAnnounced_ = false;
  bool isWanted_ = true;
  bool isHeaderSeen_ = false;
  std::uint64_t lineNumber_ = 0;

  util::TimeCodeRate rate_;
  std::optional<std::uint64_t> startFrame_;
  std::uint64_t nextFrame_ = 0;
};

}  // namespace korr::txsub
