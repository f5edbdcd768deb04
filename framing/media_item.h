// SPDX-License-Identifier: MIT

// One input sample as the access-unit builders see it.
#pragma once

#include <cstdint>
#include <optional>

namespace korr::encoding::packaging::lib_parse_es::inline v2_1 {

/// A result code in the platform's manner: negative values are failures.
using Result = std::int32_t;
inline constexpr Result kOk = 0;
constexpr bool failed(Result result) {
  return result < 0;
}

/// One input sample: bytes, times, flags. Builders share it by reference count while they hold it.
class IMediaItem {
 public:
  struct Times {
    std::uint64_t start = 0;  ///< 100 ns
    std::uint64_t stop = 0;   ///< 100 ns
  };

  virtual ~IMediaItem() = default;

  virtual std::int32_t length() const = 0;  ///< payload bytes

  /// Stores the address of the payload, valid as long as the item, or returns a failure.
  virtual Result payload(const std::uint8_t*& data) const = 0;

  /// Nothing when the sample has no time.
  virtual std::optional<Times> times() const = 0;

  /// True when the sample begins a new PES payload (its sync-point flag).
  virtual bool startFlag() const = 0;

  /// The sample's discontinuity flag.
  virtual bool secondFlag() const = 0;
};

}  // namespace korr::encoding::packaging::lib_parse_es::inline v2_1
