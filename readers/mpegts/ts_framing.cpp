// SPDX-License-Identifier: MIT
#include "readers/mpegts/ts_framing.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstring>
#include <utility>

namespace korr::txsub {
namespace {

constexpr std::array<std::size_t, 3> kDistances{188, 192, 204};
// A sync byte is as common as any other; so many at equal distances are not.
constexpr std::size_t kPacketsForSync = 5;
constexpr std::size_t kSyncReach = kPacketsForSync * (kTsPacketSize + TsFraming::kLargestGap);

/// Whether this can be a packet's header: adaptation_field_control 0 is reserved.
bool isHeader(const std::uint8_t* bytes) {
  return bytes[0] == kTsSyncByte && (bytes[3] & 0x30) != 0;
}

/// Whether packets follow each other from `at` on; at the end of the input a few must do.
bool packetsFollow(std::span<const std::uint8_t> bytes, std::size_t at, std::size_t distance,
                   bool isEnd) {
  for (std::size_t i = 0; i < kPacketsForSync; ++i, at += distance) {
    if (at + kTsPacketSize > bytes.size()) {
      return isEnd && (i >= 2 || (i == 1 && at >= bytes.size()));
    }
    if (!isHeader(bytes.data() + at)) return false;
  }
  return true;
}

/// The distance of the packets that follow each other from `at` on, best `preferred`; 0 when none
/// do.
std::size_t distanceAt(std::span<const std::uint8_t> bytes, std::size_t at, std::size_t preferred,
                       bool isEnd) {
  const auto fits = [&](std::size_t distance) { return packetsFollow(bytes, at, distance, isEnd); };
  if (preferred != 0 && fits(preferred)) return preferred;
  const auto found = std::ranges::find_if(kDistances, fits);
  return found == kDistances.end() ? 0 : *found;
}

}  // namespace

bool TsFraming::search(std::span<const std::uint8_t> bytes, std::size_t& at, bool isEnd,
                       std::uint64_t offset) {
  if (distance_ != 0) {
    if (at + kTsPacketSize > bytes.size()) return false;  // not lost, only not here yet
    lostAt_ = offset + at;
    lastDistance_ = std::exchange(distance_, 0);
  }
  while (at < bytes.size()) {
    const void* const sync = std::memchr(bytes.data() + at, kTsSyncByte, bytes.size() - at);
    if (!sync) {
      at = bytes.size();
      break;
    }
    at = static_cast<std::size_t>(static_cast<const std::uint8_t*>(sync) - bytes.data());
    distance_ = distanceAt(bytes, at, lastDistance_, isEnd);
    if (distance_ != 0) {
      reportGap(offset + at);
      return true;
    }
    if (!isEnd && at + kSyncReach > bytes.size()) return false;
    ++at;
  }
  if (isEnd) reportGap(offset + bytes.size());
  return false;
}

// Before the first packet and after the last a part of one is nothing to speak of.
void TsFraming::reportGap(std::uint64_t found) {
  const std::uint64_t count = found - lostAt_;
  const bool isCut = (lostAt_ == 0 || distance_ == 0) && count < kTsPacketSize + kLargestGap;
  if (!report_ || isCut) return;
  report_->warn("byte %" PRIu64 ": %" PRIu64 " bytes are no transport packets; passed over",
                lostAt_, count);
}

bool looksLikeTransportStream(std::span<const std::uint8_t> start, bool isEnd) {
  std::size_t at = 0;
  return TsFraming().next(start, at, isEnd, 0) != nullptr;
}

}  // namespace korr::txsub
