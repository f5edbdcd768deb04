// SPDX-License-Identifier: MIT

// The 33-bit clocks of a program on one line of time.
#pragma once

#include <cstdint>
#include <optional>

#include "model/media_time.h"

namespace korr::txsub {

using encoding::subtitling::MediaTime;

/// Ticks of the 90 kHz system clock, unwrapped: signed, as a first PTS may lie before its PCR.
using TsTicks = std::int64_t;

inline constexpr TsTicks kTicksPerSecond = 90'000;
/// Farther from the clock a time stamp is not believed, and a step of the clock is a splice.
inline constexpr TsTicks kClockTolerance = 10 * kTicksPerSecond;

/// `to` - `from` of two 33-bit time stamps, the short way round.
constexpr TsTicks tickDifference(std::uint64_t to, std::uint64_t from) {
  constexpr std::uint64_t kWrap = std::uint64_t{1} << 33;
  const std::uint64_t ahead = (to - from) % kWrap;
  return static_cast<TsTicks>(ahead) - (ahead < kWrap / 2 ? 0 : static_cast<TsTicks>(kWrap));
}

constexpr MediaTime toMediaTime(TsTicks ticks) {
  return ticks < 0 ? 0 : encoding::subtitling::fromTicks90k(static_cast<std::uint64_t>(ticks));
}

/// The system time clock of one program (ISO/IEC 13818-1, 2.4.2). It starts at its first PCR and
/// only goes forward: over the wrap after 26.5 hours, and over splices, where it takes the step
/// that it took before.
class TsClock {
 public:
  void onPcr(std::uint64_t pcr, bool discontinuity);

  /// Goes on by a time stamp that has been placed, as PCRs have not come for long.
  void carryOn(std::uint64_t stamp, TsTicks time);

  /// The current time; nothing before the first PCR.
  std::optional<TsTicks> now() const { return now_; }

  /// A time stamp on this line of time; nothing when the clock does not vouch for it.
  std::optional<TsTicks> place(std::uint64_t stamp) const;

 private:
  std::uint64_t pcr_ = 0;       // the last one
  TsTicks step_ = 0;            // between the last two
  std::optional<TsTicks> now_;  // at the last PCR
  bool isCarriedOn_ = false;    // since then
};

/// The time stamps of one elementary stream, on the line of its program's clock where there is
/// one, else on their own.
class TsStreamClock {
 public:
  /// `pts`, of a picture or of sound, on the line of time. Where the clock does not vouch for it:
  /// as far from the stream's last time stamp as it is, or the clock itself when that is too far as
  /// well. A clock that has stopped is carried on.
  TsTicks place(std::uint64_t pts, TsClock& clock);

  /// The time of a PES packet of subtitles, which do not come often enough to go by the last one:
  /// that of the clock when it does not vouch for `pts`, or when there is none. Nothing when there
  /// is no clock either.
  std::optional<TsTicks> placeSubtitle(std::optional<std::uint64_t> pts, const TsClock& clock);

 private:
  TsTicks remember(std::uint64_t pts, TsTicks time);
  TsTicks placeAlone(std::uint64_t pts) const;

  struct Stamp {
    std::uint64_t pts = 0;
    TsTicks time = 0;
  };
  std::optional<Stamp> last_;
};

}  // namespace korr::txsub
