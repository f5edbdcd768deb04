// SPDX-License-Identifier: MIT

// Where transport packets begin in a run of bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "readers/mpegts/ts_report.h"

namespace korr::txsub {

inline constexpr std::size_t kTsPacketSize = 188;
inline constexpr std::uint8_t kTsSyncByte = 0x47;

/// Finds the packets of 188 bytes (ISO/IEC 13818-1, 2.4.3.2), also those with a time stamp of 4
/// bytes before each (M2TS) or parity of 16 bytes after it (EN 300 429). Finds them again after
/// bytes that are none. A copy is a look ahead.
class TsFraming {
 public:
  /// Says where bytes are passed over; none for a look ahead.
  explicit TsFraming(TsReport* report = nullptr) : report_(report) {}

  /// The packet at or after `at`, which moves to where the next one is expected: past it, or at
  /// most `kLargestGap` beyond the end. Null when `bytes` must go on first, from `at` on;
  /// `isEnd`: they do not. `offset`: of `bytes` in the input, for messages.
  const std::uint8_t* next(std::span<const std::uint8_t> bytes, std::size_t& at, bool isEnd,
                           std::uint64_t offset) {
    if (distance_ != 0 && at + kTsPacketSize <= bytes.size() && bytes[at] == kTsSyncByte) {
      const std::uint8_t* const packet = bytes.data() + at;
      at += distance_;
      return packet;
    }
    return search(bytes, at, isEnd, offset) ? next(bytes, at, isEnd, offset) : nullptr;
  }

  static constexpr std::size_t kLargestGap = 16;  ///< between two packets

 private:
  bool search(std::span<const std::uint8_t> bytes, std::size_t& at, bool isEnd,
              std::uint64_t offset);
  void reportGap(std::uint64_t found);

  TsReport* report_;
  std::size_t distance_ = 0;      // from packet to packet; 0 while none is found
  std::size_t lastDistance_ = 0;  // before the packets were lost
  std::uint64_t lostAt_ = 0;      // offset from which on bytes are passed over
};

/// Whether a recording that begins so is a transport stream, perhaps after some other bytes: five
/// packets in a row tell, or fewer when the input is no longer (`isEnd`).
bool looksLikeTransportStream(std::span<const std::uint8_t> start, bool isEnd);

/// In so many bytes a transport stream shows, in bytes.
inline constexpr std::size_t kTsProbeSize = 64 * 1024;

}  // namespace korr::txsub
