// SPDX-License-Identifier: MIT
#include "teletext/hamming.h"

#include <gtest/gtest.h>

#include "testkit/encoders/teletext_encoder.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {
namespace {

// EN 300 706, 8.2, as its table lists them: bit 0 is sent first.
constexpr std::array<std::uint8_t, 16> kCodewords = {
    0x15, 0x02, 0x49, 0x5E, 0x64, 0x73, 0x38, 0x2F, 0xD0, 0xC7, 0x8C, 0x9B, 0xA1, 0xB6, 0xFD, 0xEA};

void flip(std::array<std::uint8_t, 3>& raw, std::size_t bit) {
  raw[bit / 8] ^= static_cast<std::uint8_t>(1 << bit % 8);
}

unsigned distance(unsigned left, unsigned right) {
  return static_cast<unsigned>(std::popcount(left ^ right));
}

TEST(Hamming84, DecodesEveryByteToTheNearestCodeword) {
  for (unsigned raw = 0; raw < 256; ++raw) {
    unsigned expected = 15;  // more than one wrong bit
    for (unsigned nibble = 0; nibble < 16; ++nibble) {
      if (distance(reverseBits(static_cast<std::uint8_t>(raw)), kCodewords[nibble]) <= 1) {
        expected = nibble;
      }
    }
    EXPECT_EQ(decodeHamming84(static_cast<std::uint8_t>(raw)), expected) << raw;
  }
}

TEST(CharacterCode, IsTheReversedByteWithoutItsOddParity) {
  for (unsigned raw = 0; raw < 256; ++raw) {
    unsigned reversed = 0;
    for (unsigned bit = 0; bit < 8; ++bit) reversed = reversed * 2 + (raw >> bit & 1);
    EXPECT_EQ(reverseBits(static_cast<std::uint8_t>(raw)), reversed);
    EXPECT_EQ(kCharacterCode[raw], std::popcount(raw) % 2 == 1 ? reversed & 0x7F : 0x7F) << raw;
  }
}

TEST(Hamming2418, ReadsEveryValueAndCorrectsEverySingleError) {
  for (std::uint32_t value = 0; value < 1u << 18; ++value) {
    auto raw = encoders::encodeHamming2418(value);
    ASSERT_EQ(decodeHamming2418(raw), value);
    flip(raw, value % 24);
    ASSERT_EQ(decodeHamming2418(raw), value) << "bit " << value % 24;
  }
}

TEST(Hamming2418, RefusesEveryDoubleError) {
  for (const std::uint32_t value : {0u, 0x3FFFFu, 0x2A5C3u}) {
    for (std::size_t first = 0; first < 24; ++first) {
      for (std::size_t second = first + 1; second < 24; ++second) {
        auto raw = encoders::encodeHamming2418(value);
        flip(raw, first);
        flip(raw, second);
        EXPECT_EQ(decodeHamming2418(raw), std::nullopt) << first << ' ' << second;
      }
    }
  }
}

}  // namespace
}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
