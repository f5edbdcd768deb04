// SPDX-License-Identifier: MIT
#include "util/bit_reader.h"

#include <gtest/gtest.h>

#include <array>

namespace korr::util {
namespace {

TEST(BitReader, ReadsFieldsAcrossBytes) {
  constexpr std::array<std::uint8_t, 6> kBytes = {0b10101'0'11, 0b0000'1111, 0x12,
                                                  0x34,         0x56,        0x78};
  BitReader reader(kBytes);
  EXPECT_EQ(reader.read(5), 0b10101u);
  EXPECT_FALSE(reader.readFlag());
  EXPECT_EQ(reader.read(0), 0u);
  EXPECT_EQ(reader.read(6), 0b110000u);
  EXPECT_EQ(reader.read(32), 0xF1234567u);
  EXPECT_EQ(reader.bitsLeft(), 4u);
  EXPECT_FALSE(reader.isByteAligned());
  EXPECT_EQ(reader.read(4), 8u);
  EXPECT_TRUE(reader.exhausted());
  EXPECT_FALSE(reader.failed());
}

TEST(BitReader, ReadsEveryWidthAtEveryPlace) {
  std::array<std::uint8_t, 14> bytes{};
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(37 * i + 11);
  const auto bitAt = [&](std::size_t i) { return std::uint32_t{bytes[i / 8]} >> (7 - i % 8) & 1U; };
  for (unsigned width = 0; width <= 32; ++width) {
    for (std::size_t at = 0; at + width <= bytes.size() * 8; ++at) {
      std::uint32_t expected = 0;
      for (std::size_t i = 0; i < width; ++i) expected = expected << 1 | bitAt(at + i);
      BitReader reader(bytes);
      reader.skip(at);
      ASSERT_EQ(reader.read(width), expected) << width << " bits at " << at;
      ASSERT_EQ(reader.position(), at + width);
    }
  }
}

TEST(BitReader, GivesZeroPastTheEndAndRemembersIt) {
  constexpr std::array<std::uint8_t, 1> kBytes = {0xFF};
  BitReader reader(kBytes);
  reader.skip(4);
  BitReader peek = reader;
  EXPECT_EQ(peek.read(5), 0u);
  EXPECT_TRUE(peek.failed());
  EXPECT_EQ(peek.read(1), 0u);
  EXPECT_EQ(reader.read(4), 0xFu);
  EXPECT_FALSE(reader.failed());
  reader.skip(SIZE_MAX);
  EXPECT_TRUE(reader.failed());
  BitReader empty({});
  EXPECT_TRUE(empty.exhausted());
  empty.allowZeros();
  EXPECT_EQ(empty.read(1), 0u);
}

TEST(BitReader, HasItsFailureLookedAt) {
  EXPECT_DEBUG_DEATH(static_cast<void>(BitReader({}).readFlag()), "isFailureKnown_");
}

}  // namespace
}  // namespace korr::util
