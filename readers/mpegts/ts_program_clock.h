// SPDX-License-Identifier: MIT

// Tells a listener the clocks of all programs.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>

#include "readers/mpegts/ts_packet.h"
#include "readers/mpegts/ts_program_times.h"
#include "readers/mpegts/ts_tables.h"
#include "readers/program_clock.h"
#include "readers/video/video_syntax.h"

namespace korr::txsub {

inline constexpr std::uint16_t kTimeOfDayPid = 0x14;  ///< EN 300 468, table 1

/// A picture that begins.
struct TsPicture {
  std::uint64_t pts = 0;
  TsTicks time = 0;       ///< where the stream's clock places it
  bool isMarked = false;  ///< random_access_indicator (ISO/IEC 13818-1, 2.4.3.5)
  std::optional<VideoCodec> codec{};
  std::span<const std::uint8_t> start{};  ///< its first bytes
};

/// Between the demultiplexer and a listener.
class TsProgramClock {
 public:
  /// Neither is owned.
  TsProgramClock(IClockListener& listener, TsProgramTimes& times)
      : listener_(listener), times_(times) {}

  /// The program's video stream is the first one that its map names.
  void follow(const std::map<std::uint16_t, TsProgramMap>& programs);

  void takePicture(std::uint16_t pid, std::uint32_t program, const TsPicture& picture);
  void takePcr(std::uint32_t program, std::uint64_t pcr);

  /// A packet of `kTimeOfDayPid`.
  void takeTimeOfDay(const TsPacket& packet);

 private:
  struct Video {
    std::uint16_t pid = 0;
    bool hasMarks = false;  // random access points are marked as such
  };

  IClockListener& listener_;
  TsProgramTimes& times_;
  std::map<std::uint32_t, Video> videos_;  // by program
};

/// The time that a section of TDT or TOT tells: milliseconds since 1970-01-01T00:00:00Z. Nothing
/// when it is none, or no time.
std::optional<std::int64_t> readTimeOfDay(std::span<const std::uint8_t> section);

}  // namespace korr::txsub
