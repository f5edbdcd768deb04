// SPDX-License-Identifier: MIT

// One pass over a transport stream that publishes its subtitles in segments.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "readers/program_clock.h"
#include "sessions/service_pass.h"
#include "sessions/stream_sessions.h"
#include "streaming/segmenter.h"
#include "streaming/stream_publisher.h"
#include "util/exception.h"

namespace korr::txsub {

struct StreamPassSettings {
  std::optional<std::uint32_t> program;  ///< program_number; nothing: the only one
  SegmenterSettings segmenter;
  bool isPaced = false;  ///< reads no faster than the programme runs
  /// The input comes as it is sent: its time of day is now.
  bool isLive = false;
  bool isLeftOpen = false;  ///< manifests do not end with the input: another run goes on
};

/// The programme that is asked for is not there, or there are several and none is asked for.
class ProgrammeError final : public util::TessaryException {
 public:
  using TessaryException::TessaryException;
};

/// What a service has come to.
struct StreamServiceReport {
  std::string folder;
  std::string name;
  std::uint64_t cues = 0;
};

/// Drives a segmenter by the clock of one programme and publishes what its services show, each
/// segment as soon as the clock has passed its end.
class StreamPass final : public IClockListener, private ISegmentListener {
 public:
  using MakeFinder = ServicePass::MakeFinder;

  /// `publisher` and `monitor` are not owned. `makeFinder`: of streams of the programme.
  StreamPass(const StreamPassSettings& settings, StreamPublisher& publisher, MakeFinder makeFinder,
             ISessionMonitor& monitor);

  /// Reads to the end, or until the user interrupts. This pass must be the reader's clock listener.
  /// Throws OutputError and ProgrammeError.
  void run(IMediaReader& reader);

  void onPicture(std::uint32_t program, const ClockStamp& stamp, bool isRandomAccess) override;
  void onClock(std::uint32_t program, const ClockStamp& stamp) override;
  void onTimeOfDay(std::int64_t utc) override;

  /// Segments of this run.
  std::uint64_t segmentCount() const { return segments_; }
  /// Streams that could carry subtitles, of all programmes.
  std::size_t streamCount() const { return streams_; }
  /// Whether any clock has come.
  bool hasClock() const { return lastTime_.has_value(); }
  /// What was offered; complete at the end.
  const std::vector<StreamServiceReport>& services() const { return reports_; }

  /// Of the whole input, as far as it has been read; nothing before the first second.
  std::optional<std::uint64_t> bitsPerSecond() const;

 private:
  void onSegment(const Segment& segment) override;

  std::unique_ptr<IServiceFinder> finderOf(const StreamInfo& stream);
  bool isFollowed(std::uint32_t program);
  void settleProgram();
  std::string programList() const;
  void noteTime(MediaTime time);
  void offerServices();
  WallTime wallTimeOf(const Segment& segment);
  StreamService descriptionOf(const Service& service) const;
  void reportServices();

  StreamPassSettings settings_;
  StreamPublisher& publisher_;
  MakeFinder makeFinder_;
  ISessionMonitor& monitor_;
  Segmenter segmenter_;
  std::vector<StreamSession*> sessions_;          // the pass of the services owns them
  std::map<std::string, StreamService> offered_;  // by folder
  std::vector<StreamServiceReport> reports_;
  IMediaReader* reader_ = nullptr;

  std::map<std::uint32_t, std::string> programs_;  // with streams, and their names
  std::optional<std::uint32_t> program_;           // that is followed
  bool isProgramSettled_ = false;
  std::size_t streams_ = 0;

  std::optional<MediaTime> firstTime_;
  std::optional<MediaTime> lastTime_;  // of the clock
  bool hasPcr_ = false;
  std::optional<MediaTime> lastPicture_;
  std::chrono::steady_clock::time_point started_;
  std::optional<WallTime> nextWallTime_;  // where the next segment begins
  std::uint64_t segments_ = 0;
  bool isDayReported_ = false;
  unsigned jumps_ = 0;
};

}  // namespace korr::txsub
