// SPDX-License-Identifier: MIT

// A programme without end, made as it is read, and what is true of it.
#pragma once

#include <cstdint>
#include <deque>
#include <random>
#include <string>
#include <vector>

#include "testkit/encoders/ts_builder.h"

namespace korr::bench {

using encoders::Bytes;

/// Times in ticks of 90 kHz: `time` counts on from the programme's beginning, `stamp` is what its
/// 33-bit clock says then.
struct MadeCue {
  std::string text;
  std::uint64_t time = 0;
  std::uint64_t stamp = 0;
  std::uint64_t stopStamp = 0;
};

/// A picture that decoding can begin with.
struct MadeAccessPoint {
  std::uint64_t time = 0;
  std::uint64_t stamp = 0;
};

/// H.264 with groups of pictures of changing length, and teletext. Pages 888 and 889 show a cue of
/// 2.6 s every 4 s, each with a text of its own; every other one of page 888 ends only with the
/// header that clears it.
class MadeProgramme {
 public:
  struct Settings {
    unsigned picturesPerSecond = 10;  ///< of 90 000
    std::size_t pictureBytes = 200;
    unsigned seed = 1;
  };

  static constexpr std::uint64_t kSecond = 90'000;
  static constexpr std::uint64_t kWrap = std::uint64_t{1} << 33;
  static constexpr std::uint64_t kLead = kSecond / 2;  ///< from PCR to PTS of a picture

  explicit MadeProgramme(const Settings& settings) : settings_(settings), random_(settings.seed) {}

  // What the next seconds have.
  bool hasVideo = true;
  bool hasCues = true;
  bool hasSecondPage = false;

  /// The clock jumps to `stamp`.
  void jumpTo(std::uint64_t stamp) {
    base_ = (stamp + kWrap - (time_ + kStart) % kWrap) % kWrap;
    ++jumps_;
  }

  /// The next second.
  Bytes second();

  std::uint64_t time() const { return time_; }

  /// What the seconds so far have shown; to be taken out by whoever checks it.
  std::deque<MadeCue> cues;
  std::deque<MadeAccessPoint> accessPoints;

 private:
  static constexpr std::uint64_t kStart = 10 * kSecond;  // the stamp of time 0
  static constexpr std::uint64_t kTeletextLead = kSecond / 5;

  std::uint64_t stampOf(std::uint64_t time) const { return (time + kStart + base_) % kWrap; }
  void tables();
  void picture(std::uint64_t now);
  void teletext(std::uint64_t now);

  Settings settings_;
  std::mt19937 random_;
  encoders::TsBuilder stream_;
  std::uint64_t time_ = 0;
  std::uint64_t base_ = 0;
  unsigned version_ = 0;  // of the program map
  bool hadSecondPage_ = false;
  unsigned leftInGroup_ = 0;  // pictures
  std::uint64_t cueCount_ = 0;
  unsigned jumps_ = 0;
  unsigned toldJumps_ = 0;
};

inline constexpr std::uint16_t kMadeVideoPid = 0x100;
inline constexpr std::uint16_t kMadeTeletextPid = 0x101;
inline constexpr const char* kMadeFolder = "0x0101-page-888-swe";
inline constexpr const char* kMadeSecondFolder = "0x0101-page-889-nor";

}  // namespace korr::bench
