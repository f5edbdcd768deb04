// Recorded samples (.jsonl) as a recording.
#pragma once

#include <memory>
#include <string>

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
  ReadProgress progress() const override;
  std::optional<MediaTime> startTime(std::uint32_t) const override { return startTime_; }
  std::optional<MediaTime> endTime(std::uint32_t) const override { return endTime_; }

  /// The one stream, as the header describes it.
  const StreamInfo& stream() const { return stream_; }

 private:
  bool nextLine(std::string& line);
  bool fillBuffer();
  void readSample(const std::string& line, IReaderListener& listener);
  void noteTimes(const InputSample& sample);

  std::unique_ptr<IByteSource> source_;
  log::ILogger* logger_;
  StreamInfo stream_;
  bool isAnnounced_ = false;
  bool isWanted_ = false;
  std::string buffer_;
  std::size_t consumed_ = 0;  // bytes of buffer_ that are done with
  std::uint64_t bytesRead_ = 0;
  std::uint64_t lineNumber_ = 0;
  std::optional<MediaTime> startTime_;
  std::optional<MediaTime> endTime_;
};

}  // namespace korr::txsub
