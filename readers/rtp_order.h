// SPDX-License-Identifier: MIT

// RTP datagrams in the order in which they were sent.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <vector>

namespace korr::txsub {

/// Takes the payloads out of RTP (RFC 3550, 5.1), puts those that overtook each other into order,
/// and leaves out those that come twice. One that is missing is waited for as long as `kMostHeld`
/// others take. Not thread-safe.
class RtpOrder {
 public:
  /// 67 ms of 10 Mbit/s.
  static constexpr std::size_t kMostHeld = 64;

  /// A datagram; appends what can be told of the stream by now to `out`. What is no RTP is taken as
  /// it is.
  void take(std::span<const std::uint8_t> datagram, std::vector<std::uint8_t>& out);

  /// The source ends or starts anew: appends what is held.
  void flush(std::vector<std::uint8_t>& out);

 private:
  void giveOut(std::vector<std::uint8_t>& out);

  std::optional<std::uint32_t> source_;  // SSRC
  std::int64_t expected_ = 0;            // the next one, counted on over the wrap
  std::map<std::int64_t, std::vector<std::uint8_t>> held_;  // payloads that are ahead
};

}  // namespace korr::txsub
