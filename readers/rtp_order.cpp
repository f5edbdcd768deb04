// SPDX-License-Identifier: MIT
#include "readers/rtp_order.h"

#include <cstdlib>

namespace korr::txsub {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kHeaderSize = 12;
// Farther off, the sender has started anew (RFC 3550, A.1).
constexpr std::int64_t kMostMisordered = 3000;

std::uint32_t bigEndian(Bytes bytes) {
  std::uint32_t value = 0;
  for (const auto byte : bytes) value = value << 8 | byte;
  return value;
}

struct RtpPacket {
  std::uint16_t sequence = 0;
  std::uint32_t source = 0;
  Bytes payload;
};

std::optional<RtpPacket> parse(Bytes datagram) {
  constexpr std::uint8_t kVersion = 2;
  if (datagram.size() < kHeaderSize || datagram[0] >> 6 != kVersion) return {};
  const bool hasPadding = (datagram[0] & 0x20) != 0;
  const bool hasExtension = (datagram[0] & 0x10) != 0;
  std::size_t begin = kHeaderSize + 4U * (datagram[0] & 0xF);
  if (hasExtension) {
    if (begin + 4 > datagram.size()) return {};
    begin += 4 + 4 * std::size_t{bigEndian(datagram.subspan(begin + 2, 2))};
  }
  const std::size_t padding = hasPadding ? datagram.back() : 0;
  if (begin + padding > datagram.size()) return {};
  return RtpPacket{.sequence = static_cast<std::uint16_t>(bigEndian(datagram.subspan(2, 2))),
                   .source = bigEndian(datagram.subspan(8, 4)),
                   .payload = datagram.subspan(begin, datagram.size() - begin - padding)};
}

}  // namespace

void RtpOrder::take(Bytes datagram, std::vector<std::uint8_t>& out) {
  const auto packet = parse(datagram);
  if (!packet) {
    out.insert(out.end(), datagram.begin(), datagram.end());
    return;
  }
  std::int64_t ahead = static_cast<std::int16_t>(
      static_cast<std::uint16_t>(packet->sequence - static_cast<std::uint16_t>(expected_)));
  if (source_ != packet->source || std::abs(ahead) > kMostMisordered) {
    flush(out);
    source_ = packet->source;
    expected_ = packet->sequence;
    ahead = 0;
  }
  if (ahead < 0) return;  // came before, or was given up
  held_.try_emplace(expected_ + ahead, packet->payload.begin(), packet->payload.end());
  if (held_.size() > kMostHeld) expected_ = held_.begin()->first;
  giveOut(out);
}

void RtpOrder::flush(std::vector<std::uint8_t>& out) {
  for (const auto& [number, payload] : held_) out.insert(out.end(), payload.begin(), payload.end());
  held_.clear();
  source_.reset();
}

void RtpOrder::giveOut(std::vector<std::uint8_t>& out) {
  while (!held_.empty() && held_.begin()->first == expected_) {
    const auto& payload = held_.begin()->second;
    out.insert(out.end(), payload.begin(), payload.end());
    held_.erase(held_.begin());
    ++expected_;
  }
}

}  // namespace korr::txsub
