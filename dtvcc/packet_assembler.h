// SPDX-License-Identifier: MIT

// cc_data triplets to the packets of the digital caption channel.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "log/logger.h"
#include "model/media_time.h"

namespace korr::encoding::subtitling::dtvcc {

/// Joins triplets of types 3 (a packet starts) and 2 (it goes on) into packets of up to 128 bytes
/// (CEA-708-E, 5). A packet that misses bytes, and what follows a start that was missed, costs
/// itself; one line a run of losses says so.
class PacketAssembler {
 public:
  static constexpr std::size_t kLargestPacket = 128;  ///< bytes, its header among them

  /// `logger` may be null, not owned.
  explicit PacketAssembler(log::ILogger* logger) : logger_(logger) {}

  /// Takes one triplet. The data of a packet, without its header, when this triplet completes it;
  /// valid until the next call.
  std::optional<std::span<const std::uint8_t>> take(std::span<const std::uint8_t, 3> triplet,
                                                    MediaTime time) {
    constexpr std::uint8_t kValid = 0x04;
    constexpr std::uint8_t kDtvcc = 0x02;
    if ((triplet[0] & (kValid | kDtvcc)) != (kValid | kDtvcc)) return {};
    return takePair(triplet, time);
  }

  /// Whether packets were lost since the last call.
  bool takeLoss();

 private:
  std::optional<std::span<const std::uint8_t>> takePair(std::span<const std::uint8_t, 3> triplet,
                                                        MediaTime time);
  void start(std::uint8_t header, MediaTime time);
  void lose(const char* what, MediaTime time);

  log::ILogger* logger_;
  std::array<std::uint8_t, kLargestPacket> packet_{};
  std::size_t size_ = 0;  // bytes taken; 0 outside of a packet
  std::size_t announced_ = 0;
  std::optional<unsigned> lastSequence_;
  bool isLosing_ = false;  // reported, and no whole packet since
  bool hasLost_ = false;
};

}  // namespace korr::encoding::subtitling::dtvcc
