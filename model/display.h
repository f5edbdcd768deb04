// SPDX-License-Identifier: MIT

// What a service shows over time: the seam between decoders that follow a receiver and whatever
// keeps or cuts what they show.
#pragma once

#include <cstdint>
#include <span>

#include "model/media_time.h"
#include "model/subtitle.h"

namespace korr::encoding::subtitling::inline v2_1 {

/// Takes what one service shows, in the order of time.
class IDisplayListener {
 public:
  virtual ~IDisplayListener() = default;

  /// From `time` on (100 ns, never earlier than the last call's) `subtitle` is on the screen, until
  /// the next call. An empty subtitle clears the screen.
  virtual void onDisplay(MediaTime time, Subtitle subtitle) = 0;
};

/// Decodes the access units of one service as a standard receiver does and tells a listener what it
/// shows. Not thread-safe. Damage costs the smallest unit of syntax and one line in the log;
/// nothing that the input holds makes a call throw.
class IDisplayDecoder {
 public:
  virtual ~IDisplayDecoder() = default;

  /// Takes one access unit: a PES data field of teletext or DVB subtitles from its data_identifier
  /// on, or the cc_data triplets of one picture. `time` is its presentation time (100 ns); units
  /// come in that order.
  virtual void decode(std::span<const std::uint8_t> unit, MediaTime time) = 0;

  /// Live, `until` has passed: what began before it and only waits for a later unit is shown as far
  /// as it has come. Units go on coming.
  virtual void settle(MediaTime until) { (void)until; }

  /// The stream ends at `end`: what only waited for a later unit is shown, and what times out later
  /// is cleared then. No unit comes any more.
  virtual void finish(MediaTime end) = 0;
};

}  // namespace korr::encoding::subtitling::inline v2_1
