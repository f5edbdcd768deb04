// SPDX-License-Identifier: MIT

// What the readers of caption files have in common.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "readers/line_reader.h"
#include "readers/media_reader.h"

namespace korr::txsub {

/// Reads a text file of captions: a header, then lines that begin with a SMPTE time code. Lines
/// that cannot be read are reported by number and left out. Not thread-safe.
///
/// Recordings customarily start at a whole hour, so that is where times count from: a first line at
/// 01:00:02:00 lies two seconds after the start.
class CaptionLinesReader : public IMediaReader {
 public:
  /// Throws util::TessaryException when the input does not begin with the header of its format.
  bool read(IReaderListener& listener) final;
  void unselect(std::uint32_t streamId) final;
  ReadProgress progress() const final { return lines_.progress(); }
  std::optional<MediaTime> startTime(std::uint32_t program) const final;
  std::optional<MediaTime> endTime(std::uint32_t program) const final;

 protected:
  struct Format {
    const char* name = "";
    std::string_view header;      ///< how the first line begins
    std::size_t longestLine = 0;  ///< in bytes
  };

  CaptionLinesReader(std::unique_ptr<IByteSource> source, const ReaderOptions& options,
                     const Format& format);

  /// A line behind the header, without blanks around it; not empty.
  virtual void readLine(std::string_view line, IReaderListener& listener) = 0;
  virtual MediaTime timeOfFrame(std::uint64_t frame) const = 0;

  /// Tells the listener the triplets of `frame`, which comes last so far.
  void send(std::uint64_t frame, std::span<const std::uint8_t> triplets, IReaderListener& listener);
  bool hasStarted() const { return startFrame_.has_value(); }
  void startAt(std::optional<std::uint64_t> frame) { startFrame_ = frame; }
  std::uint64_t nextFrame() const { return nextFrame_; }

  /// Warns of the line: `word` of it, and what is wrong.
  void leaveOut(std::string_view word, const char* why);
  /// Warns of the line without leaving it out.
  void warn(const char* what);

 private:
  void take(const LineReader::Line& line, IReaderListener& listener);

  const Format format_;
  LineReader lines_;
  log::ILogger* logger_;
  StreamInfo stream_;
  bool isAnnounced_ = false;
  bool isWanted_ = true;
  bool isHeaderSeen_ = false;
  std::uint64_t lineNumber_ = 0;
  std::optional<std::uint64_t> startFrame_;  // the whole hour before the first line
  std::uint64_t nextFrame_ = 0;              // not yet taken
};

/// The time code of the hour that `timeCode`, a valid one, lies in.
std::string wholeHour(std::string_view timeCode);

}  // namespace korr::txsub
