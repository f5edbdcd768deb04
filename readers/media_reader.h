// SPDX-License-Identifier: MIT

// What every kind of recording looks like to the rest of the program.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "log/logger.h"
#include "model/media_time.h"
#include "model/modes.h"
#include "readers/program_clock.h"

namespace korr::txsub {

using encoding::subtitling::MediaTime;
using encoding::subtitling::PictureSystem;
using encoding::subtitling::SubtitleInputType;

/// One input sample, exactly as the filter's input pin would receive it.
struct InputSample {
  struct Times {
    MediaTime start = 0;
    MediaTime stop = 0;

    friend bool operator==(const Times&, const Times&) = default;
  };

  std::vector<std::uint8_t> data;
  std::optional<Times> times;
  bool sync = false;           ///< begins a PES payload
  bool discontinuity = false;  ///< the unit's second flag
  /// The format block of a media type attached to this sample.
  std::optional<std::vector<std::uint8_t>> format;

  friend bool operator==(const InputSample&, const InputSample&) = default;
};

/// One stream of a recording that can carry subtitles: a teletext or DVB subtitle stream, a caption
/// track, or a video stream with captions in its pictures.
struct StreamInfo {
  std::uint32_t id = 0;       ///< names the stream in calls; unique within its reader
  std::uint32_t pid = 0;      ///< PID in a transport stream, track number elsewhere
  std::uint32_t program = 0;  ///< program_number; 0 when there is none
  SubtitleInputType type = SubtitleInputType::Teletext;
  PictureSystem pictures = PictureSystem::Dvb;  ///< of DvbSubtitle
  /// Of DVD subtitles: the size and the palette, as a VobSub index has them.
  std::string pictureSetup;
  bool isVideo = false;  ///< captions travel in its pictures, and may be absent
  /// The elementary stream's descriptors as the PMT carries them (tag, length, body), concatenated;
  /// empty when there are none.
  std::vector<std::uint8_t> descriptors;
  std::string language;     ///< ISO 639-2 code where the container gives one beside descriptors
  std::string serviceName;  ///< of the program, UTF-8; empty until an SDT names it
};

/// Takes what a reader finds, on the thread that calls `read`.
class IReaderListener {
 public:
  virtual ~IReaderListener() = default;

  /// A stream was found, or its description changed (same id). Answers whether its samples are
  /// wanted; the reader spends next to nothing on the others.
  virtual bool onStream(const StreamInfo& stream) = 0;

  /// One sample of a wanted stream. Teletext and DVB: a PES data field from its data_identifier on.
  /// PGS: segments. DVD: a sub-picture unit, or pieces of it that follow one another.
  /// Captions: the cc_data triplets of one picture, in presentation order.
  virtual void onSample(const StreamInfo& stream, const InputSample& sample) = 0;
};

/// How far a reader has come.
struct ReadProgress {
  std::uint64_t bytesRead = 0;
  std::optional<std::uint64_t> bytesTotal;  ///< nothing for a pipe
};

/// What a reader came across beside the streams that it reported.
struct ReaderFindings {
  bool hasAskedPid = true;  ///< whether there is anything on ReaderOptions::pid, if that was given
  /// Subtitles in forms that no reader makes samples of, as "track 3 (SubRip subtitle, eng)".
  std::vector<std::string> otherSubtitles;
};

/// Reads one recording from front to back. Not thread-safe. Damage is reported to the logger (what,
/// where, what is done about it) and passed over; only an input that cannot be read at all throws
/// util::TessaryException.
class IMediaReader {
 public:
  virtual ~IMediaReader() = default;

  /// Reads on a little (about a megabyte) and reports what it finds. False at the end, after
  /// everything held back has been reported.
  [[nodiscard]] virtual bool read(IReaderListener& listener) = 0;

  /// Samples of this stream are no longer wanted: from now on the reader spends next to nothing on
  /// it. Also called from within `onStream` and `onSample`.
  virtual void unselect(std::uint32_t streamId) = 0;

  virtual ReadProgress progress() const = 0;

  /// Where the recording starts: time 0 of playable files. Nothing until a time was seen. The
  /// programs of a multiplex have clocks of their own, so `program` says for whose streams
  /// (StreamInfo::program); readers of anything else know only 0.
  virtual std::optional<MediaTime> startTime(std::uint32_t program) const = 0;

  /// Where the recording ends, as far as it has been read.
  virtual std::optional<MediaTime> endTime(std::uint32_t program) const = 0;

  /// As far as it has been read.
  virtual ReaderFindings findings() const { return {}; }
};

/// Takes bytes of the input into `buffer` and returns how many, 0 at its end. Throws
/// util::TessaryException when reading fails. May return less than asked for.
class IByteSource {
 public:
  virtual ~IByteSource() = default;

  [[nodiscard]] virtual std::size_t read(std::uint8_t* buffer, std::size_t size) = 0;
  virtual std::optional<std::uint64_t> size() const = 0;  ///< nothing for a pipe
};

struct ReaderOptions {
  /// Only this PID; also read when no PAT or PMT names it.
  std::optional<std::uint32_t> pid;
  log::ILogger* logger = nullptr;
  /// How long a transport stream's tables are waited for once its first bytes have come; streams
  /// are told by their content until the tables come. They are due every half second (TR 101
  /// 290, 5.2.1).
  std::chrono::milliseconds tablesDue{2000};
  /// Who follows the clocks of a transport stream's programs; null: nobody. Not owned.
  IClockListener* clock = nullptr;
  /// How long the end of a file is waited at for more to be written there.
  std::chrono::milliseconds growthDue{0};
  /// Whether an input from a network that has gone is waited for.
  bool reconnects = false;
};

}  // namespace korr::txsub
