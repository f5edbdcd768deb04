// SPDX-License-Identifier: MIT

// Recordings in every container but MPEG-TS, through libavformat.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "readers/media_reader.h"

namespace korr::txsub {

/// Reads MP4, MOV, Matroska, MXF and whatever else libavformat knows: captions in H.264, HEVC,
/// AV1 and MPEG-2 video, CEA-608 tracks, DVB subtitles and teletext. Times before the recording's
/// zero, which edit lists can make, count as zero. Messages of libavformat about the file go to the
/// logger; these are routed per process, so one reader at a time.
class AvReader final : public IMediaReader {
 public:
  /// Opens a local file. Throws util::TessaryException when it is no recording.
  AvReader(const std::string& path, const ReaderOptions& options);

  /// Reads from a source that cannot seek. An MP4 file whose index comes last cannot be read so.
  AvReader(std::unique_ptr<IByteSource> source, const ReaderOptions& options);

  ~AvReader() override;
  AvReader(const AvReader&) = delete;
  AvReader& operator=(const AvReader&) = delete;

  bool read(IReaderListener& listener) override;
  void unselect(std::uint32_t streamId) override;
  ReadProgress progress() const override;
  std::optional<MediaTime> startTime(std::uint32_t program) const override;
  std::optional<MediaTime> endTime(std::uint32_t program) const override;
  ReaderFindings findings() const override;

 private:
  class Recording;

  std::unique_ptr<Recording> recording_;
};

}  // namespace korr::txsub
