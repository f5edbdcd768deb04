// SPDX-License-Identifier: MIT

// The codes that protect teletext bytes. All tables are computed from their definitions.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <optional>
#include <span>

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {

/// A byte with its bits in the opposite order: teletext sends the least significant bit first,
/// while a PES packet keeps the bit that is sent first as the most significant (EN 300 472, 4.2).
constexpr std::uint8_t reverseBits(std::uint8_t byte) {
  unsigned result = 0;
  for (int bit = 0; bit < 8; ++bit)
    result |= (static_cast<unsigned>(byte) >> bit & 1u) << (7 - bit);
  return static_cast<std::uint8_t>(result);
}

/// The Hamming 8/4 byte of `nibble` as it stands in a PES packet, first bit sent in bit 7: P1 D1 P2
/// D2 P3 D3 P4 D4 (EN 300 706, 8.2).
constexpr std::uint8_t encodeHamming84(std::uint8_t nibble) {
  const unsigned d1 = nibble & 1, d2 = nibble >> 1 & 1, d3 = nibble >> 2 & 1, d4 = nibble >> 3 & 1;
  const unsigned p1 = 1 ^ d1 ^ d3 ^ d4;
  const unsigned p2 = 1 ^ d1 ^ d2 ^ d4;
  const unsigned p3 = 1 ^ d1 ^ d2 ^ d3;
  const unsigned p4 = 1 ^ p1 ^ d1 ^ p2 ^ d2 ^ p3 ^ d3 ^ d4;
  return static_cast<std::uint8_t>(p1 << 7 | d1 << 6 | p2 << 5 | d2 << 4 | p3 << 3 | d3 << 2 |
                                   p4 << 1 | d4);
}

/// What a Hamming 8/4 byte with more than one wrong bit decodes as, deliberately: it is not
/// refused.
inline constexpr std::uint8_t kHammingError = 15;

/// The four data bits of each raw byte, D1 in bit 0; one wrong bit is corrected.
inline constexpr auto kHamming84 = [] {
  std::array<std::uint8_t, 256> table{};
  table.fill(kHammingError);
  for (unsigned nibble = 0; nibble < 16; ++nibble) {
    const auto code = encodeHamming84(static_cast<std::uint8_t>(nibble));
    table[code] = static_cast<std::uint8_t>(nibble);
    for (int bit = 0; bit < 8; ++bit) table[code ^ (1u << bit)] = static_cast<std::uint8_t>(nibble);
  }
  return table;
}();

constexpr std::uint8_t decodeHamming84(std::uint8_t raw) {
  return kHamming84[raw];
}

/// Whether a raw byte is a Hamming 8/4 byte with at most one wrong bit.
inline constexpr auto kIsHamming84 = [] {
  std::array<bool, 256> table{};
  for (unsigned nibble = 0; nibble < 16; ++nibble) {
    const auto code = encodeHamming84(static_cast<std::uint8_t>(nibble));
    table[code] = true;
    for (int bit = 0; bit < 8; ++bit) table[code ^ (1u << bit)] = true;
  }
  return table;
}();

/// The character code of each raw byte, 0x00 to 0x7F; with wrong parity 0x7F (EN 300 706, 8.1).
inline constexpr auto kCharacterCode = [] {
  std::array<std::uint8_t, 256> table{};
  for (unsigned raw = 0; raw < 256; ++raw) {
    const bool isOdd = std::popcount(raw) % 2 == 1;
    table[raw] = isOdd ? reverseBits(static_cast<std::uint8_t>(raw)) & 0x7F : 0x7F;
  }
  return table;
}();

/// No character: what stands in a cell that was never received with right parity.
inline constexpr std::uint8_t kUnknownCharacter = 0x80;

/// The same with `kUnknownCharacter` for wrong parity.
inline constexpr auto kCharacterCodeOrUnknown = [] {
  auto table = kCharacterCode;
  for (unsigned raw = 0; raw < 256; ++raw) {
    if (std::popcount(raw) % 2 == 0) table[raw] = kUnknownCharacter;
  }
  return table;
}();

/// The bytes of a Hamming 24/18 triplet as one word; bit n - 1 is the n-th bit sent.
constexpr std::uint32_t wordOfTriplet(std::span<const std::uint8_t, 3> raw) {
  return static_cast<std::uint32_t>(reverseBits(raw[0]) | reverseBits(raw[1]) << 8 |
                                    reverseBits(raw[2]) << 16);
}

/// The 18 data bits of a triplet's word as they are, D1 in bit 0: D1 is sent third, D2 to D4 fifth,
/// D5 to D11 ninth, D12 to D18 seventeenth (EN 300 706, 8.3).
constexpr std::uint32_t dataOfTriplet(std::uint32_t word) {
  return (word >> 2 & 0x1) | (word >> 4 & 0x7) << 1 | (word >> 8 & 0x7F) << 4 |
         (word >> 16 & 0x7F) << 11;
}

/// The 18 data bits of a Hamming 24/18 triplet of raw bytes, D1 in bit 0; one wrong bit is
/// corrected, two give nothing (EN 300 706, 8.3).
constexpr std::optional<std::uint32_t> decodeHamming2418(std::span<const std::uint8_t, 3> raw) {
  std::uint32_t word = wordOfTriplet(raw);
  // Check i covers the positions, counted from 1, that have bit i set; all parities are odd.
  unsigned syndrome = 0;
  for (unsigned check = 0; check < 5; ++check) {
    unsigned ones = 0;
    for (unsigned position = 1; position < 24; ++position)
      ones += (position >> check & 1) & (word >> (position - 1) & 1);
    if (ones % 2 == 0) syndrome |= 1u << check;
  }
  const bool isOddOverall = std::popcount(word) % 2 == 1;
  if (syndrome != 0) {
    if (isOddOverall || syndrome > 23) return std::nullopt;
    word ^= 1u << (syndrome - 1);
  }
  return dataOfTriplet(word);
}

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
