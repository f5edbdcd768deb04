// SPDX-License-Identifier: MIT

// Packets to their streams, by PID.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "readers/media_reader.h"
#include "readers/mpegts/ts_program_clock.h"
#include "readers/mpegts/ts_program_times.h"
#include "readers/mpegts/ts_report.h"
#include "readers/mpegts/ts_stream.h"
#include "readers/mpegts/ts_stream_kind.h"
#include "readers/mpegts/ts_tables.h"

namespace korr::txsub {

/// Follows the tables, keeps the streams that they name, or that show by their content, and hands
/// each packet to what it is for. Of other PIDs it looks at packet headers only.
class TsDemultiplexer {
 public:
  TsDemultiplexer(const ReaderOptions& options, TsReport& report);
  ~TsDemultiplexer();
  TsDemultiplexer(const TsDemultiplexer&) = delete;
  TsDemultiplexer& operator=(const TsDemultiplexer&) = delete;

  /// Who is told of streams and samples from now on.
  void setListener(IReaderListener& listener) { listener_ = &listener; }

  /// Looks ahead at a packet for its tables. `apply` follows them; `take` gets the packet again.
  void scout(const TsPacket& packet);
  bool areTablesComplete() const { return tables_.areComplete(); }
  void apply();

  /// The next packet.
  void take(const TsPacket& packet) {
    Pid& pid = pids_[packet.pid()];
    if (pid.roles != kNone) route(packet, pid);
  }

  /// The end of the input: hands out what is held back.
  void flush();

  void unselect(std::uint32_t streamId);

  /// Whether packets have come on the PID that was asked for, if one was.
  bool hasAskedPid() const {
    return !options_.pid || (*options_.pid < kPids && pids_[*options_.pid].isSeen);
  }

  /// As ReaderFindings has them.
  std::vector<std::string> otherSubtitles() const;

  /// Null where nothing of the program has been seen.
  const TsProgramTime* timeOf(std::uint32_t program) const { return times_.find(program); }

 private:
  /// What packets of a PID are looked at for; bits.
  enum Role : std::uint8_t {
    kNone = 0,
    kTable = 1,
    kClock = 2,    ///< PCR
    kTiming = 4,   ///< PTS of pictures and sound
    kUnknown = 8,  ///< may turn out to hold what is looked for
    kStream = 16,  ///< a wanted stream
    kTimeOfDay = 32,
  };

  /// A stream that has been announced.
  struct Stream {
    StreamInfo info;
    TsStreamKind kind;
    std::unique_ptr<ITsStream> decoder{};
    TsContinuity continuity{};
    bool isWanted = true;
    bool isScramblingReported = false;
  };

  /// All that is known of one PID.
  struct Pid {
    std::uint8_t roles = kNone;
    bool isSeen = false;                     // in a role
    std::optional<std::uint16_t> program{};  // whose map lists it
    std::vector<TsStreamKind> kinds{};       // that it has been, in order
    TsStreamClock timing{};                  // of role kTiming
    std::unique_ptr<Stream> stream{};
  };
  static constexpr std::size_t kPids = 8192;

  // Packets.
  void route(const TsPacket& packet, Pid& pid);
  void takeStream(const TsPacket& packet, Stream& stream);
  void takePesStart(const TsPacket& packet, Pid& pid);
  bool detect(const TsPacket& packet, const PesHeader& header);
  void noteTiming(const TsPacket& packet, Pid& pid, const PesHeader& header);
  void tellClock(std::uint16_t pid, std::uint64_t pcr);

  // Streams.
  void applyEntry(std::uint16_t program, const TsStreamEntry& entry);
  void addStream(StreamInfo info, const TsStreamKind& kind);
  void updateStream(Stream& stream, StreamInfo info);
  std::unique_ptr<ITsStream> makeDecoder(Stream& stream);
  void removeStream(Pid& pid);
  std::uint32_t idOf(std::uint16_t pid, const TsStreamKind& kind);
  void announce(Stream& stream);

  // Roles.
  void updateRoles();
  void lookEverywhere();
  bool isAskedFor(std::uint16_t pid) const { return !options_.pid || *options_.pid == pid; }
  std::uint16_t programOf(std::uint16_t pid) const;

  ReaderOptions options_;
  TsReport& report_;
  IReaderListener* listener_ = nullptr;
  TsTables tables_;
  TsProgramTimes times_;
  std::optional<TsProgramClock> clock_;  // where somebody follows it
  std::vector<Pid> pids_{kPids};
  std::size_t streams_ = 0;                 // that there are now
  std::vector<std::uint16_t> videoPids_{};  // of wanted streams
};

}  // namespace korr::txsub
