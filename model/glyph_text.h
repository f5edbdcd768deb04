// SPDX-License-Identifier: MIT

// One displayed character.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace korr::encoding::subtitling::inline v2_1 {

/// One displayed character as its UTF-8 byte sequence, one to four bytes (a base letter with a
/// combining mark counts as one character). Consumers copy the bytes; nobody re-encodes them.
/// Held in place, so that rows of text cost one allocation.
class GlyphText {
 public:
  static constexpr std::size_t kMaxBytes = 4;

  constexpr GlyphText() = default;

  /// `utf8` is cut after four bytes.
  constexpr explicit GlyphText(std::string_view utf8)
      : size_(static_cast<std::uint8_t>(utf8.size() < kMaxBytes ? utf8.size() : kMaxBytes)) {
    for (std::size_t i = 0; i < size_; ++i) bytes_[i] = utf8[i];
  }

  /// The glyph of one ASCII code.
  constexpr explicit GlyphText(char ascii) : bytes_{ascii}, size_(1) {}

  constexpr std::string_view view() const { return {bytes_.data(), size_}; }

  // Bytes behind the last one are 0.
  friend constexpr bool operator==(const GlyphText& left, const GlyphText& right) {
    return left.size_ == right.size_ &&
           std::bit_cast<std::uint32_t>(left.bytes_) == std::bit_cast<std::uint32_t>(right.bytes_);
  }

 private:
  std::array<char, kMaxBytes> bytes_{};
  std::uint8_t size_ = 0;
};

}  // namespace korr::encoding::subtitling::inline v2_1
