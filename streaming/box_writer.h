// SPDX-License-Identifier: MIT

// Writes the boxes of ISO/IEC 14496-12, clause 4.2.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>

#include "model/byte_buffer.h"

namespace korr::txsub {

using encoding::subtitling::ByteBuffer;

/// A growing sequence of boxes. Numbers are written big-endian; the size of a box is filled in when
/// it ends.
class BoxWriter {
 public:
  BoxWriter() { bytes_.reserve(kUsualSize); }

  /// A box that ends with the object.
  class [[nodiscard]] Box {
   public:
    ~Box() { writer_.putSize(at_); }
    Box(const Box&) = delete;
    Box& operator=(const Box&) = delete;

   private:
    friend class BoxWriter;
    Box(BoxWriter& writer, std::size_t at) : writer_(writer), at_(at) {}

    BoxWriter& writer_;
    std::size_t at_;
  };

  /// `type`: four characters.
  Box open(std::string_view type) {
    const std::size_t at = bytes_.size();
    u32(0);
    text(type);
    return Box(*this, at);
  }

  /// A FullBox: `flags` has 24 bits.
  Box openFull(std::string_view type, std::uint8_t version, std::uint32_t flags) {
    const std::size_t at = bytes_.size();
    u32(0);
    text(type);
    u32(std::uint32_t{version} << 24 | flags);
    return Box(*this, at);
  }

  void u8(std::uint8_t value) { bytes_.push_back(value); }
  void u16(std::uint16_t value) { number(value, 2); }
  void u32(std::uint32_t value) { number(value, 4); }
  void u64(std::uint64_t value) { number(value, 8); }
  void zeros(std::size_t count) { bytes_.resize(bytes_.size() + count); }
  void text(std::string_view text) { encoding::subtitling::append(bytes_, text); }
  void terminated(std::string_view string) {
    text(string);
    u8(0);
  }
  void bytes(std::span<const std::uint8_t> data) {
    bytes_.insert(bytes_.end(), data.begin(), data.end());
  }

  std::size_t size() const { return bytes_.size(); }

  /// Fills in four bytes that were written as 0.
  void putU32(std::size_t at, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) {
      bytes_[at + static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
    }
  }

  ByteBuffer take() { return std::move(bytes_); }

 private:
  static constexpr std::size_t kUsualSize = 1024;

  void number(std::uint64_t value, int size) {
    for (int i = size - 1; i >= 0; --i) u8(static_cast<std::uint8_t>(value >> (8 * i)));
  }

  void putSize(std::size_t at) { putU32(at, static_cast<std::uint32_t>(bytes_.size() - at)); }

  ByteBuffer bytes_;
};

}  // namespace korr::txsub
