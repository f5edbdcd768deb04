#include "dvb_subtitle/pixel_data.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "dvb_subtitle/code_string.h"
#include "samples/encoders/bit_writer.h"
#include "samples/encoders/dvb_encoder.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle {

void PrintTo(const PixelRun& run, std::ostream* out) {
  *out << run.length << " of " << run.code;
}

namespace {

using testing::ElementsAre;
using util::BitReader;

// Bytes from fields of binary digits; whatever else separates them.
std::vector<std::uint8_t> bytesOf(std::string_view fields) {
  encoders::BitWriter writer;
  for (const char digit : fields)
    if (digit == '0' || digit == '1') writer.put(digit == '1', 1);
  return writer.bytes();
}

struct Decoded {
  std::vector<PixelRun> runs;
  std::size_t bytesLeft = 0;
};

Decoded decode(PixelDepth depth, std::string_view fields) {
  const auto bytes = bytesOf(fields);
  BitReader reader(bytes);
  Decoded decoded;
  while (const auto run = readRun(reader, depth)) decoded.runs.push_back(*run);
  EXPECT_TRUE(reader.isByteAligned());
  decoded.bytesLeft = reader.bitsLeft() / 8;
  return decoded;
}

TEST(PixelCodeStrings, OfTwoBitsHaveTheseRuns) {
  const auto decoded = decode(PixelDepth::TwoBit,
                              "10 11 00'1'000'01 00'1'111'00 00'01 00'00'01"
                              " 00'00'10'0000'11 00'00'10'1111'00"
                              " 00'00'11'00000000'01 00'00'11'11111111'10 00'00'00 "
                              "0000 11110000");
  EXPECT_THAT(decoded.runs,
              ElementsAre(PixelRun{2, 1}, PixelRun{3, 1}, PixelRun{1, 3}, PixelRun{0, 10},
                          PixelRun{0, 1}, PixelRun{0, 2}, PixelRun{3, 12}, PixelRun{0, 27},
                          PixelRun{1, 29}, PixelRun{2, 284}));
  EXPECT_EQ(decoded.bytesLeft, 1U) << "stuffing goes up to the byte";
}

TEST(PixelCodeStrings, OfFourBitsHaveTheseRuns) {
  const auto decoded = decode(PixelDepth::FourBit,
                              "1111 0000'0'001 0000'0'111 0000'10'00'1010 0000'10'11'0000"
                              " 0000'1100 0000'1101 0000'1110'0000'0001 0000'1110'1111'0010"
                              " 0000'1111'00000000'0011 0000'1111'11111111'0100 0000'0'000 "
                              "0000 11110000");
  EXPECT_THAT(decoded.runs,
              ElementsAre(PixelRun{15, 1}, PixelRun{0, 3}, PixelRun{0, 9}, PixelRun{10, 4},
                          PixelRun{0, 7}, PixelRun{0, 1}, PixelRun{0, 2}, PixelRun{1, 9},
                          PixelRun{2, 24}, PixelRun{3, 25}, PixelRun{4, 280}));
  EXPECT_EQ(decoded.bytesLeft, 1U);
}

TEST(PixelCodeStrings, OfEightBitsHaveTheseRuns) {
  const auto decoded = decode(PixelDepth::EightBit,
                              "10000001 00000000'0'0000001 00000000'0'1111111"
                              " 00000000'1'0000001'00000111 00000000'1'0000000'00000111"
                              " 00000000'1'1111111'11111111 00000000'0'0000000 11110000");
  EXPECT_THAT(decoded.runs, ElementsAre(PixelRun{0x81, 1}, PixelRun{0, 1}, PixelRun{0, 127},
                                        PixelRun{7, 1}, PixelRun{7, 0}, PixelRun{0xFF, 127}));
  EXPECT_EQ(decoded.bytesLeft, 1U);
}

// The run that was begun still counts, with 0 for what is missing; the next read ends the string.
TEST(PixelCodeStrings, ThatAreCutOffEndThere) {
  EXPECT_THAT(decode(PixelDepth::TwoBit, "01 00'1'111").runs,
              ElementsAre(PixelRun{1, 1}, PixelRun{0, 10}));
  EXPECT_THAT(decode(PixelDepth::FourBit, "0000'10'11").runs, ElementsAre(PixelRun{0, 7}));
  EXPECT_THAT(decode(PixelDepth::FourBit, "0001 0000'1111'0001").runs,
              ElementsAre(PixelRun{1, 1}, PixelRun{0, 25}))
      << "a length of 4 bits out of 8 is 0 as a whole";
  EXPECT_THAT(decode(PixelDepth::EightBit, "00000000'1'0000100").runs, ElementsAre(PixelRun{0, 4}));
}

TEST(PixelCodeStrings, ComeBackFromAnEncoder) {
  std::mt19937 random(1);
  for (const unsigned bits : {2U, 4U, 8U}) {
    for (int round = 0; round < 300; ++round) {
      std::vector<std::uint8_t> codes;
      while (codes.size() < 700) {
        const auto length = 1 + (random() % 3 == 0 ? random() % 300 : random() % 30);
        codes.insert(codes.end(), length, static_cast<std::uint8_t>(random() % (1U << bits)));
      }
      const auto bytes = encoders::codeString(bits, codes.data(), codes.size());
      BitReader reader(bytes);
      reader.skip(8);  // data_type
      std::vector<std::uint8_t> decoded;
      const auto depth = bits == 2   ? PixelDepth::TwoBit
                         : bits == 4 ? PixelDepth::FourBit
                                     : PixelDepth::EightBit;
      while (const auto run = readRun(reader, depth))
        decoded.insert(decoded.end(), run->length, static_cast<std::uint8_t>(run->code));
      ASSERT_EQ(decoded, codes);
      ASSERT_TRUE(reader.exhausted());
    }
  }
}

// Each table entry stands for itself: its index in red.
DVBClutSet indexCluts() {
  DVBClutSet cluts{};
  for (std::size_t i = 0; i < 256; ++i) {
    cluts.eightBit[i].red = static_cast<std::uint8_t>(i);
    if (i < 16) cluts.fourBit[i].red = static_cast<std::uint8_t>(i);
    if (i < 4) cluts.twoBit[i].red = static_cast<std::uint8_t>(i);
  }
  return cluts;
}

TEST(ColourLookUp, BringsEveryCodeToTheDepthOfTheRegion) {
  using enum PixelDepth;
  const DVBClutSet cluts = indexCluts();
  const auto index = [&](PixelDepth region, PixelDepth string, std::uint32_t code) {
    return int{lookUp(cluts, {}, region, string, code).red};
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
