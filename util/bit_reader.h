// SPDX-License-Identifier: MIT

// Bits out of bytes, most significant bit first.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <span>
#include <type_traits>

namespace korr::util::inline v2_1 {

/// Reads bit fields, most significant bit first. A read that needs more bits than remain gives 0 as
/// a whole and uses up the rest, so a loop over damaged data always ends; whether that has happened
/// must be asked, or said not to matter. A copy is a peek: it reads on without moving the original.
class BitReader {
 public:
  constexpr explicit BitReader(std::span<const std::uint8_t> bytes)
      : bytes_(bytes.data()), bitCount_(bytes.size() * 8) {}

#ifndef NDEBUG
  BitReader(const BitReader&) = default;
  BitReader& operator=(const BitReader&) = default;
  constexpr ~BitReader() {
    if (std::is_constant_evaluated()) return;
    assert(!failed_ || isFailureKnown_ || std::uncaught_exceptions() != 0);
  }
#endif

  /// From now on zeros are right where bits are missing, and nobody need ask `failed`.
  constexpr void allowZeros() {
    areZerosAllowed_ = true;
  }

  /// Reads `width` bits, 0 to 32.
  [[nodiscard]] constexpr std::uint32_t read(unsigned width) {
    assert(width <= 32);
    if (width > bitsLeft()) {
      fail();
      return 0;
    }
    if (width == 0) return 0;
    const std::size_t first = position_ / 8;
    if (first + 8 <= bitCount_ / 8) {  // the same as below, with one load
      const std::uint64_t window = load(bytes_ + first) << position_ % 8;
      position_ += width;
      return static_cast<std::uint32_t>(window >> (64 - width));
    }
    const std::size_t last = (position_ + width - 1) / 8;
    std::uint64_t value = 0;
    for (std::size_t i = first; i <= last; ++i) value = value << 8 | bytes_[i];
    position_ += width;
    const std::size_t below = (last + 1) * 8 - position_;
    return static_cast<std::uint32_t>(value >> below & ((std::uint64_t{1} << width) - 1));
  }

  [[nodiscard]] constexpr bool readFlag() {
    return read(1) != 0;
  }

  /// Passes over `width` bits of any number, with the rule of `read`.
  constexpr void skip(std::size_t width) {
    if (width > bitsLeft()) return fail();
    position_ += width;
  }

  /// Whether `peek` may be called.
  constexpr bool canPeek() const {
    return bitsLeft() >= 64;
  }

  /// The bits that come next, the first highest, which are not passed over: 57 at least, or all 64
  /// where the reader is byte-aligned.
  [[nodiscard]] constexpr std::uint64_t peek() const {
    assert(canPeek());
    return load(bytes_ + position_ / 8) << position_ % 8;
  }

  /// `count` bytes as they are; the reader is byte-aligned and has as many.
  [[nodiscard]] constexpr std::span<const std::uint8_t> readBytes(std::size_t count) {
    assert(isByteAligned() && count <= bitsLeft() / 8);
    const std::span<const std::uint8_t> bytes{bytes_ + position_ / 8, count};
    position_ += count * 8;
    return bytes;
  }

  constexpr std::size_t position() const {
    return position_;
  }
  constexpr std::size_t bitsLeft() const {
    return bitCount_ - position_;
  }

  /// True as soon as the last bit has been read.
  constexpr bool exhausted() const {
    return position_ == bitCount_;
  }

  constexpr bool isByteAligned() const {
    return position_ % 8 == 0;
  }

  /// Whether any read so far asked for more bits than there were.
  [[nodiscard]] constexpr bool failed() const {
    isFailureKnown_ = true;
    return failed_;
  }

 private:
  constexpr void fail() {
    position_ = bitCount_;
    if (!failed_) isFailureKnown_ = areZerosAllowed_;
    failed_ = true;
  }

  // Eight bytes, the first highest; written out, compilers make one instruction of it.
  static constexpr std::uint64_t load(const std::uint8_t* bytes) {
    return std::uint64_t{bytes[0]} << 56 | std::uint64_t{bytes[1]} << 48 |
           std::uint64_t{bytes[2]} << 40 | std::uint64_t{bytes[3]} << 32 |
           std::uint64_t{bytes[4]} << 24 | std::uint64_t{bytes[5]} << 16 |
           std::uint64_t{bytes[6]} << 8 | std::uint64_t{bytes[7]};
  }

  const std::uint8_t* bytes_;
  std::size_t bitCount_;
  std::size_t position_ = 0;
  bool failed_ = false;
  bool areZerosAllowed_ = false;
  mutable bool isFailureKnown_ = false;
};

}  // namespace korr::util::inline v2_1
