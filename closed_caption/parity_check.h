// SPDX-License-Identifier: MIT

// The parity of line-21 bytes.
#pragma once

#include <bit>
#include <cstdint>

#include "closed_caption/cc_data.h"

namespace korr::encoding::subtitling::closed_caption::inline v2 {

/// Checks the odd parity of bytes (CEA-608, 5.3) unless somebody stripped it on the way: many tools
/// write bit 7 as 0. Only a byte whose seven other bits have an even number of ones tells which it
/// is; parity counts as stripped while fewer than an eighth of the last 32 such bytes have bit 7.
class ParityCheck {
 public:
  /// Whether `byte` is to be trusted. Null bytes always are: they carry nothing, and padding is
  /// often written without parity.
  bool accepts(std::uint8_t byte) {
    const unsigned code = byte & ~unsigned{kParityBit};
    if (code == 0) return true;
    const bool hasParityBit = (byte & kParityBit) != 0;
    const unsigned folded = (code ^ code >> 4) & 0x0F;
    const bool needsParityBit = (kOddNibbles >> folded & 1) == 0;
    if (needsParityBit) observe(hasParityBit);
    return hasParityBit == needsParityBit || isStripped();
  }

  /// Whether bytes are taken without a check for now.
  bool isStripped() const { return std::popcount(window_) * 8 < observed_; }

 private:
  static constexpr int kWindow = 32;
  static constexpr unsigned kOddNibbles = 0x6996;  // bit n: n has an odd number of ones

  void observe(bool hasParityBit) {
    window_ = window_ << 1 | (hasParityBit ? 1u : 0u);
    if (observed_ < kWindow) ++observed_;
  }

  std::uint32_t window_ = 0;  // bit 7 of the bytes that need it, the latest one lowest
  int observed_ = 0;
};

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
