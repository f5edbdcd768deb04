// SPDX-License-Identifier: MIT

// The service blocks of a packet.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace korr::encoding::subtitling::dtvcc {

inline constexpr std::uint32_t kServices = 63;

struct ServiceBlock {
  std::uint32_t service = 0;  ///< 1 to 63
  std::span<const std::uint8_t> data;
};

/// Walks through the blocks of one packet's data.
class ServiceBlocks {
 public:
  explicit ServiceBlocks(std::span<const std::uint8_t> packetData) : rest_(packetData) {}

  /// The next block with data; nothing at the end of the packet or at a null block, after which
  /// there are only fill bytes (CEA-708-E, 6.2.3).
  std::optional<ServiceBlock> next();

  /// Whether the last block was announced longer than the packet; its data ends with the packet.
  bool isCut() const { return isCut_; }

 private:
  std::span<const std::uint8_t> rest_;
  bool isCut_ = false;
};

}  // namespace korr::encoding::subtitling::dtvcc
