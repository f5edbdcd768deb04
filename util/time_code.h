// SPDX-License-Identifier: MIT

// SMPTE time codes at the frame rates of video.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace korr::util::inline v2_1 {

/// How a time code counts frames (SMPTE ST 12-1).
struct TimeCodeRate {
  std::uint32_t numerator = 30000;  ///< frames in `denominator` seconds
  std::uint32_t denominator = 1001;
  std::uint32_t base = 30;  ///< numbers that the frames of a second have
  /// Numbers are left out so that the code keeps up with the clock: two of 30 each minute but
  /// every tenth.
  bool dropFrame = true;

  std::uint32_t droppedAMinute() const { return dropFrame ? base / 15 : 0; }

  friend bool operator==(const TimeCodeRate&, const TimeCodeRate&) = default;
};

/// The frame, counted from 00:00:00:00, of a code "HH:MM:SS:FF", or "HH:MM:SS;FF" with drop-frame
/// codes. Nothing when it is none, or when the rate has no such frame number.
std::optional<std::uint64_t> frameOfTimeCode(std::string_view timeCode, const TimeCodeRate& rate);

/// The code of a frame, with a semicolon before the frame number of drop-frame codes. From 100
/// hours on it starts again.
std::string timeCodeOfFrame(std::uint64_t frame, const TimeCodeRate& rate);

}  // namespace korr::util::inline v2_1
