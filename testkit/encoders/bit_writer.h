// SPDX-License-Identifier: MIT

// Bits into bytes, most significant bit first.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace korr::encoders {

/// Writes bit fields, most significant bit first: the mirror of util::BitReader.
class BitWriter {
 public:
  BitWriter& put(std::uint64_t value, unsigned width) {
    for (unsigned bit = width; bit-- > 0;) {
      if (bitCount_ % 8 == 0) bytes_.push_back(0);
      if (value >> bit & 1) bytes_.back() |= static_cast<std::uint8_t>(0x80 >> bitCount_ % 8);
      ++bitCount_;
    }
    return *this;
  }

  /// ue(v), an unsigned Exp-Golomb code (H.264, 9.1).
  BitWriter& putUe(std::uint64_t value) {
    const auto width = static_cast<unsigned>(std::bit_width(value + 1));
    return put(0, width - 1).put(value + 1, width);
  }

  /// A bit 1, then bits 0 up to the next byte: rbsp_trailing_bits (H.264, 7.3.2.11).
  BitWriter& putTrailingBits() { return put(1, 1).alignWithZeros(); }

  BitWriter& alignWithZeros() {
    bitCount_ = bytes_.size() * 8;
    return *this;
  }

  const std::vector<std::uint8_t>& bytes() const { return bytes_; }

 private:
  std::vector<std::uint8_t> bytes_;
  std::size_t bitCount_ = 0;
};

}  // namespace korr::encoders
