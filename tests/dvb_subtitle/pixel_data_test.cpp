// SPDX-License-Identifier: MIT
#include "dvb_subtitle/pixel_data.h"

#include <gtest/gtest.h>

#include <array>

#include "dvb_subtitle/code_string.h"
#include "testkit/encoders/bit_writer.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle {

namespace {

using util::BitReader;

// Bytes from fields of binary digits; whatever else separates them.
std::vector<std::uint8_t> bytesOf(std::string_view fields) {
  encoders::BitWriter writer;
  for (const char digit : fields)
    if (digit == '0' || digit == '1') writer.put(digit == '1', 1);
  return writer.bytes();
}

// "code*length" of each run, then the bytes that are left.
template <PixelDepth Depth>
std::string decode(std::string_view fields) {
  const auto bytes = bytesOf(fields);
  BitReader reader(bytes);
  reader.allowZeros();
  std::string decoded;
  while (const auto run = readRun<Depth>(reader)) {
    decoded += std::to_string(run->code) + '*' + std::to_string(run->length) + ' ';
  }
  EXPECT_TRUE(reader.isByteAligned());
  return decoded + std::to_string(reader.bitsLeft() / 8);
}

// Stuffing goes up to the byte: one is left.
TEST(PixelCodeStrings, HaveTheRunsOfTheirDepth) {
  EXPECT_EQ(decode<PixelDepth::TwoBit>(
                "10 11 00'1'000'01 00'1'111'00 00'01 00'00'01"
                " 00'00'10'0000'11 00'00'10'1111'00"
                " 00'00'11'00000000'01 00'00'11'11111111'10 00'00'00 0000 11110000"),
            "2*1 3*1 1*3 0*10 0*1 0*2 3*12 0*27 1*29 2*284 1");
  EXPECT_EQ(decode<PixelDepth::FourBit>(
                "1111 0000'0'001 0000'0'111 0000'10'00'1010 0000'10'11'0000"
                " 0000'1100 0000'1101 0000'1110'0000'0001 0000'1110'1111'0010"
                " 0000'1111'00000000'0011 0000'1111'11111111'0100 0000'0'000 0000 11110000"),
            "15*1 0*3 0*9 10*4 0*7 0*1 0*2 1*9 2*24 3*25 4*280 1");
  EXPECT_EQ(
      decode<PixelDepth::EightBit>("10000001 00000000'0'0000001 00000000'0'1111111"
                                   " 00000000'1'0000001'00000111 00000000'1'0000000'00000111"
                                   " 00000000'1'1111111'11111111 00000000'0'0000000 11110000"),
      "129*1 0*1 0*127 7*1 7*0 255*127 1");
}

// The run that was begun still counts, with 0 for what is missing; the next read ends the string.
TEST(PixelCodeStrings, ThatAreCutOffEndThere) {
  EXPECT_EQ(decode<PixelDepth::TwoBit>("01 00'1'111"), "1*1 0*10 0");
  EXPECT_EQ(decode<PixelDepth::FourBit>("0000'10'11"), "0*7 0");
  EXPECT_EQ(decode<PixelDepth::FourBit>("0001 0000'1111'0001"), "1*1 0*25 0")
      << "a length of 4 bits out of 8 is 0 as a whole";
  EXPECT_EQ(decode<PixelDepth::EightBit>("00000000'1'0000100"), "0*4 0");
}

// As the rest of a string, from a place inside a byte where strings of the depth have such.
template <PixelDepth Depth>
void expectReadAlike(std::uint32_t first24Bits, std::size_t offset) {
  const auto byte = [&](int shift) { return static_cast<std::uint8_t>(first24Bits >> shift); };
  const std::array<std::uint8_t, 12> bytes{byte(16), byte(8), byte(0), 0x10, 0x02, 0xFF};
  BitReader byFields(bytes);
  byFields.allowZeros();
  byFields.skip(offset);
  BitReader atOnce = byFields;
  BitReader single = byFields;
  for (int i = 0; i < 8; ++i) {
    const auto run = readRunByFields<Depth>(byFields);
    ASSERT_EQ(readRun<Depth>(atOnce), run) << first24Bits;
    ASSERT_EQ(atOnce.position(), byFields.position()) << first24Bits;
    if (!run) break;
  }
  const auto pixels = readSinglePixels<Depth>(single);
  BitReader expected(bytes);
  expected.allowZeros();
  expected.skip(offset);
  for (std::uint32_t i = 0; i < pixels.count; ++i) {
    const auto code = static_cast<std::uint8_t>(pixels.codes >> (56 - 8 * i));
    ASSERT_NE(code, 0) << first24Bits;
    ASSERT_EQ(readRunByFields<Depth>(expected), (PixelRun{code, 1})) << first24Bits;
  }
  ASSERT_EQ(single.position(), expected.position()) << first24Bits;
  if (pixels.count == kMostSinglePixels) return;
  constexpr std::size_t kSingleBits = std::size_t{1} << static_cast<unsigned>(Depth);
  readRunByFields<Depth>(expected);
  ASSERT_GT(expected.position() - single.position(), kSingleBits) << first24Bits;
}

TEST(PixelCodeStrings, AreReadAlikeAtOnceAndFieldByField) {
  for (std::uint32_t bits = 0; bits < 1U << 24; bits += bits < 1U << 18 ? 1 : 61) {
    expectReadAlike<PixelDepth::TwoBit>(bits, bits % 4 * 2);
    expectReadAlike<PixelDepth::FourBit>(bits, bits % 2 * 4);
    expectReadAlike<PixelDepth::EightBit>(bits, 0);
    if (HasFatalFailure()) return;
  }
}

TEST(PixelCodes, AreBroughtToTheDepthOfTheRegion) {
  using enum PixelDepth;
  const auto index = [](PixelDepth region, PixelDepth string, std::uint32_t code) {
    return static_cast<int>(mapCode({}, region, string, code));
  };
  constexpr std::array<int, 16> kFourToTwo{0, 1, 1, 1, 1, 1, 1, 1, 2, 3, 3, 3, 3, 3, 3, 3};
  constexpr std::array<int, 4> kTwoToFour{0, 7, 8, 15};
  for (std::uint32_t code = 0; code < 256; ++code) {
    const int same = static_cast<int>(code);
    EXPECT_EQ(index(TwoBit, EightBit, code), kFourToTwo[code >> 4]);
    EXPECT_EQ(index(FourBit, EightBit, code), same >> 4);
    EXPECT_EQ(index(EightBit, EightBit, code), same);
    if (code >= 16) continue;
    EXPECT_EQ(index(TwoBit, FourBit, code), kFourToTwo[code]);
    EXPECT_EQ(index(FourBit, FourBit, code), same);
    EXPECT_EQ(index(EightBit, FourBit, code), same * 0x11);
    if (code >= 4) continue;
    EXPECT_EQ(index(TwoBit, TwoBit, code), same);
    EXPECT_EQ(index(FourBit, TwoBit, code), kTwoToFour[code]);
    EXPECT_EQ(index(EightBit, TwoBit, code), kTwoToFour[code] * 0x11);
  }
}

}  // namespace
}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle
