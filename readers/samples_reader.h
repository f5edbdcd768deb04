// SPDX-License-Identifier: MIT

// Recorded samples (.jsonl) as a recording.
#pragma once

#include <memory>

#include "readers/line_reader.h"
#include "readers/media_reader.h"

namespace korr::txsub {

/// Reads recorded samples, one JSON object a line; docs/formats.md describes them. They make one
/// stream, whose id is 0. A line that is not a sample is reported with its number and passed over;
/// a header that is none makes the constructor throw.
class SamplesReader final : public IMediaReader {
 public:
  SamplesReader(std::unique_ptr<IByteSource> source, const ReaderOptions& options);

  bool read(IReaderListener& listener) override;
  void unselect(std::uint32_t streamId) override;
  ReadProgress progress() const override { return lines_.progress(); }
  std::optional<MediaTime> startTime(std::uint32_t) const override { return startTime_; }
  std::optional<MediaTime> endTime(std::uint32_t) const override { return endTime_; }

  /// The one stream, as the header describes it.
  const StreamInfo& stream() const { return stream_; }

 private:
  void readHeader();
  void readSample(const LineReader::Line& line, IReaderListener& listener);
  void noteTimes(const InputSample& sample);

  LineReader lines_;
  log::ILogger* logger_;
  StreamInfo stream_;
  bool isAnnounced_ = false;
  bool isWanted_ = false;
  std::optional<MediaTime> startTime_;
  std::optional<MediaTime> endTime_;
};

}  // namespace korr::txsub
