// SPDX-License-Identifier: MIT

// Caption files in the MacCaption format.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "readers/caption_lines_reader.h"
#include "util/time_code.h"

namespace korr::txsub {

/// Reads an MCC file, version 1 or 2: a line a picture, of a time code and an ancillary data packet
/// that holds all its captions, line 21 and digital ones.
class MccReader final : public CaptionLinesReader {
 public:
  static constexpr std::string_view kHeader = "File Format=MacCaption_MCC V";

  MccReader(std::unique_ptr<IByteSource> source, const ReaderOptions& options);

 private:
  void readLine(std::string_view line, IReaderListener& listener) override;
  MediaTime timeOfFrame(std::uint64_t frame) const override;
  void readRate(std::string_view value);
  void readPacket(std::string_view line, IReaderListener& listener);
  void takeRate(const util::TimeCodeRate& rate);

  util::TimeCodeRate rate_;
};

}  // namespace korr::txsub
