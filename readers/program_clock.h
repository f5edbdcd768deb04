// SPDX-License-Identifier: MIT

// What tells a program's time, beside its subtitles.
#pragma once

#include <cstdint>

#include "model/media_time.h"

namespace korr::txsub {

/// A time stamp of a program, and the moment that the reader made of it.
struct ClockStamp {
  encoding::subtitling::MediaTime time = 0;  ///< 100 ns, on the line of time of the samples
  std::uint64_t ticks = 0;                   ///< 90 kHz, 33 bits: PTS of a picture, or PCR base
};

/// Takes the clocks of a transport stream's programs as its reader comes across them, on the thread
/// that calls `read`. `program`: program_number; 0 where no table names one.
///
/// With a listener the reader is live: captions that are due when the clock says so are given out
/// then, not when the pictures after them have come.
class IClockListener {
 public:
  virtual ~IClockListener() = default;

  /// A picture of the program's first video stream, in the order in which they are sent. Not told:
  /// those without a PTS, and those whose PTS belongs to a clock that has not come yet.
  /// `isRandomAccess`: decoding can begin with it.
  virtual void onPicture(std::uint32_t program, const ClockStamp& stamp, bool isRandomAccess) = 0;

  /// The program clock reference (ISO/IEC 13818-1, 2.4.3.5).
  virtual void onClock(std::uint32_t program, const ClockStamp& stamp) = 0;

  /// TDT or TOT (ETSI EN 300 468, 5.2.5 and 5.2.6): milliseconds since 1970-01-01T00:00:00Z, of all
  /// programs.
  virtual void onTimeOfDay(std::int64_t utc) = 0;
};

}  // namespace korr::txsub
