// SPDX-License-Identifier: MIT

// The clocks of all programs, and the times seen on each.
#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "readers/mpegts/ts_clock.h"
#include "readers/mpegts/ts_tables.h"

namespace korr::txsub {

/// The clock of one program, and the times seen on its line.
struct TsProgramTime {
  TsClock clock;
  std::optional<TsTicks> pictureStart;   ///< first of video and audio: where players begin
  std::optional<TsTicks> subtitleStart;  ///< first of subtitles
  std::optional<TsTicks> end;            ///< last of all

  void notePicture(TsTicks time) {
    pictureStart = std::min(pictureStart.value_or(time), time);
    noteEnd(time);
  }
  void noteSubtitle(TsTicks time) {
    subtitleStart = std::min(subtitleStart.value_or(time), time);
    noteEnd(time);
  }
  void noteEnd(TsTicks time) { end = std::max(end.value_or(time), time); }

  /// Where a player would begin.
  std::optional<TsTicks> start() const { return pictureStart ? pictureStart : subtitleStart; }
};

/// Which PCRs drive which program (ISO/IEC 13818-1, 2.4.4.8, PCR_PID). Streams that no table names
/// belong to program 0, which goes by the PCRs of the only PID that has any; by none when there are
/// several.
class TsProgramTimes {
 public:
  /// Takes the PCR PIDs of the tables, instead of those before.
  void follow(const std::map<std::uint16_t, TsProgramMap>& programs);

  /// The PIDs whose PCRs count.
  std::vector<std::uint16_t> pids() const;

  void takePcr(std::uint16_t pid, std::uint64_t pcr, bool discontinuity);

  /// Which programs go by the PCRs of a PID.
  std::vector<std::uint32_t> programsOf(std::uint16_t pid) const;

  /// Of one program; it stays where it is.
  TsProgramTime& operator[](std::uint32_t program) { return times_[program]; }

  /// Null where nothing of the program has been seen.
  const TsProgramTime* find(std::uint32_t program) const;

 private:
  static constexpr std::uint16_t kNone = 0x1FFF;  // PCR_PID

  std::map<std::uint32_t, TsProgramTime> times_;                  // by program
  std::map<std::uint16_t, std::vector<std::uint16_t>> programs_;  // by PCR PID
  std::optional<std::uint16_t> untabled_;                         // PID of PCRs for program 0
  bool areRivals_ = false;  // there are several such PIDs: none is believed
};

}  // namespace korr::txsub
