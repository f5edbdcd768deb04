// SPDX-License-Identifier: MIT

// The start codes that divide a video elementary stream.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace korr::txsub {

/// Bytes of a start code prefix: 00 00 01.
inline constexpr std::size_t kStartCodePrefix = 3;

namespace detail {

constexpr bool isStartCode(const std::uint8_t* bytes) {
  return bytes[0] == 0 && bytes[1] == 0 && bytes[2] == 1;
}

/// Whether a prefix begins at one of the `kBlock` places from `bytes` on. Without a branch, so that
/// the compiler makes a few vector instructions of it.
inline constexpr std::size_t kBlock = 32;
inline bool blockHoldsStartCode(const std::uint8_t* bytes) {
  std::uint8_t least = 0xFF;
  for (std::size_t i = 0; i < kBlock; ++i) {
    const auto differs = static_cast<std::uint8_t>(bytes[i] | bytes[i + 1] | (bytes[i + 2] ^ 1));
    least = std::min(least, differs);
  }
  return least == 0;
}

}  // namespace detail

/// Where the first start code prefix at or after `from` begins; `bytes.size()` when there is none.
/// Nearly all bytes of a recording pass through here and nowhere else.
inline std::size_t findStartCode(std::span<const std::uint8_t> bytes, std::size_t from) {
  using detail::kBlock;
  const std::uint8_t* data = bytes.data();
  const std::size_t size = bytes.size();
  constexpr std::size_t kReach = kBlock + kStartCodePrefix - 1;

  std::size_t at = from;
  if (size >= kReach && from <= size - kReach) {
    while (at + kReach <= size && !detail::blockHoldsStartCode(data + at)) at += kBlock;
    // The last block overlaps the one before it rather than leave a rest to be looked at by byte.
    const bool lastBlock = at + kReach > size;
    if (lastBlock && !detail::blockHoldsStartCode(data + size - kReach)) return size;
  }
  for (; at + kStartCodePrefix <= size; ++at) {
    if (detail::isStartCode(data + at)) return at;
  }
  return size;
}

}  // namespace korr::txsub
