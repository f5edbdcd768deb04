// SPDX-License-Identifier: MIT
#include "dvb_subtitle/clut.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "dvb_subtitle/segments.h"
#include "testkit/encoders/dvb_encoder.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle {

void PrintTo(const Colour& colour, std::ostream* out) {
  *out << '(' << int{colour.red} << ' ' << int{colour.green} << ' ' << int{colour.blue} << ' '
       << int{colour.alpha} << ')';
}

namespace {

using encoders::DvbEncoder;
using Entry = DvbEncoder::ClutEntry;

// The set that a CLUT definition with these entries makes of `cluts`.
DVBClutSet defined(const std::vector<Entry>& entries, const DvbRules& rules = kFilter,
                   DVBClutSet cluts = kDefaultClutSet) {
  constexpr std::size_t kBeforeSegment = 2;
  const auto bytes = DvbEncoder().clut(1, entries).bytes();
  util::BitReader reader({bytes.data() + kBeforeSegment, bytes.size() - kBeforeSegment - 1});
  readSegmentHeader(reader);
  applyClutDefinition(readClutDefinition(reader, rules), rules, cluts);
  return cluts;
}

// Of eight bits one of each kind, worked out from the percentages of EN 300 743, 10.1.
TEST(DefaultClut, IsTheStandardOne) {
  EXPECT_THAT(kDefaultClutSet.twoBit,
              testing::ElementsAre(Colour{}, Colour{255, 255, 255, 255}, Colour{0, 0, 0, 255},
                                   Colour{127, 127, 127, 255}));
  const auto& fourBit = kDefaultClutSet.fourBit;
  EXPECT_EQ(fourBit[0], Colour{});
  EXPECT_EQ(fourBit[1], (Colour{255, 0, 0, 255}));
  EXPECT_EQ(fourBit[6], (Colour{0, 255, 255, 255}));
  EXPECT_EQ(fourBit[8], (Colour{0, 0, 0, 255}));
  EXPECT_EQ(fourBit[11], (Colour{127, 127, 0, 255}));
  EXPECT_EQ(fourBit[15], (Colour{127, 127, 127, 255}));
  const auto& table = kDefaultClutSet.eightBit;
  EXPECT_EQ(table[0x00], Colour{});
  EXPECT_EQ(table[0x05], (Colour{255, 0, 255, 64}));
  EXPECT_EQ(table[0x08], (Colour{0, 0, 0, 128}));
  EXPECT_EQ(table[0x11], (Colour{255, 0, 0, 255}));
  EXPECT_EQ(table[0x26], (Colour{0, 255, 85, 255}));
  EXPECT_EQ(table[0x7F], (Colour{255, 255, 255, 128}));
  EXPECT_EQ(table[0x80], (Colour{127, 127, 127, 255}));
  EXPECT_EQ(table[0x97], (Colour{255, 170, 170, 255}));
  EXPECT_EQ(table[0xC8], (Colour{0, 0, 85, 255}));
  EXPECT_EQ(table[0xFF], (Colour{127, 127, 127, 255}));
}

TEST(ClutEntries, GoIntoTheFirstTableThatTakesThem) {
  const auto cluts = defined({{.id = 2, .tables = 0b110, .y = 235},
                              {.id = 5, .tables = 0b111, .y = 235},
                              {.id = 16, .tables = 0b110, .y = 235},
                              {.id = 40, .tables = 0b111, .y = 235}});
  const Colour white{255, 254, 255, 255};
  EXPECT_EQ(cluts.twoBit[2], white);
  EXPECT_EQ(cluts.fourBit[2], kDefaultClutSet.fourBit[2]);
  EXPECT_EQ(cluts.fourBit[5], white);
  EXPECT_EQ(cluts.eightBit[5], kDefaultClutSet.eightBit[5]);
  EXPECT_EQ(cluts.eightBit[16], kDefaultClutSet.eightBit[16]) << "an id that no flagged table has";
  EXPECT_EQ(cluts.eightBit[40], white);
}

Colour colourOf(std::uint32_t y, std::uint32_t cr, std::uint32_t cb, std::uint32_t transparency) {
  return colourOf(y, cr, cb, transparency, kFilter);
}

// Expected values worked out by hand from the formula in single precision.
TEST(ClutEntries, AreConvertedToRgb) {
  EXPECT_EQ(colourOf(16, 128, 128, 0), (Colour{1, 0, 1, 255}));
  EXPECT_EQ(colourOf(235, 128, 128, 0), (Colour{255, 254, 255, 255}));
  EXPECT_EQ(colourOf(255, 128, 128, 0), colourOf(235, 128, 128, 0));
  EXPECT_EQ(colourOf(81, 240, 90, 100), (Colour{255, 0, 0, 155}));
  EXPECT_EQ(colourOf(145, 34, 54, 0), (Colour{1, 255, 2, 255}));
  EXPECT_EQ(colourOf(41, 110, 240, 255), (Colour{1, 0, 255, 0}));
  EXPECT_EQ(colourOf(128, 0, 255, 0), colourOf(128, 16, 240, 0));
}

TEST(ClutEntries, OfReducedRangeAreNotScaledUpAndWithoutLumaTransparent) {
  const auto cluts = defined({{.id = 1, .y = 60, .cr = 15, .cb = 1, .t = 2, .fullRange = false},
                              {.id = 2, .y = 60, .cr = 8, .cb = 8, .t = 3, .fullRange = false},
                              {.id = 3, .y = 0, .cr = 200, .cb = 9, .t = 0},
                              {.id = 4, .y = 0, .cr = 15, .cb = 9, .t = 0, .fullRange = false}});
  EXPECT_EQ(cluts.fourBit[1], (Colour{0, 186, 0, 127}));
  EXPECT_EQ(cluts.fourBit[2].alpha, 63);
  EXPECT_EQ(cluts.fourBit[3], (Colour{0, 134, 0, 0}));
  EXPECT_EQ(cluts.fourBit[4], cluts.fourBit[3]);
}

// The corners of ITU-R BT.601, 2.5.4: black, white, and the primaries at full level, whose rounded
// codes are a step off at most.
TEST(ReceivedClutEntries, AreConvertedExactly) {
  const auto exact = [](std::uint32_t y, std::uint32_t cr, std::uint32_t cb,
                        std::uint32_t transparency = 0) {
    return colourOf(y, cr, cb, transparency, kReceiver);
  };
  EXPECT_EQ(exact(16, 128, 128), (Colour{0, 0, 0, 255}));
  EXPECT_EQ(exact(235, 128, 128), (Colour{255, 255, 255, 255}));
  EXPECT_EQ(exact(126, 128, 128), (Colour{128, 128, 128, 255}));
  EXPECT_EQ(exact(81, 240, 90), (Colour{254, 0, 0, 255}));
  EXPECT_EQ(exact(145, 34, 54), (Colour{0, 255, 1, 255}));
  EXPECT_EQ(exact(41, 110, 240), (Colour{0, 0, 255, 255}));
  EXPECT_EQ(exact(210, 146, 16), (Colour{255, 255, 0, 255}));
  EXPECT_EQ(exact(255, 128, 128, 100), (Colour{255, 255, 255, 155})) << "beyond the range";
  EXPECT_EQ(exact(1, 128, 128), (Colour{0, 0, 0, 255}));
  EXPECT_EQ(exact(235, 128, 128, 255), Colour{}) << "what is not seen has no colour";
}

// EN 300 743, 7.2.4: reduced values are the upper bits, so 8 in Cr and Cb is without colour.
TEST(ReceivedClutEntries, OfReducedRangeHaveTheirFullValue) {
  const auto cluts = defined({{.id = 1, .y = 63, .cr = 8, .cb = 8, .t = 0, .fullRange = false},
                              {.id = 2, .y = 4, .cr = 8, .cb = 8, .t = 2, .fullRange = false},
                              {.id = 3, .y = 0, .cr = 15, .cb = 9, .t = 0, .fullRange = false}},
                             kReceiver);
  EXPECT_EQ(cluts.fourBit[1], (Colour{255, 255, 255, 255}));
  EXPECT_EQ(cluts.fourBit[2], (Colour{0, 0, 0, 127}));
  EXPECT_EQ(cluts.fourBit[3], Colour{});
}

TEST(ReceivedClutEntries, GoIntoEveryTableThatTakesThemAndLeaveTheOthers) {
  const Colour white{255, 255, 255, 255};
  DVBClutSet before = kDefaultClutSet;
  before.fourBit[9] = {1, 2, 3, 255};
  const auto cluts = defined({{.id = 2, .tables = 0b111, .y = 235}}, kReceiver, before);
  EXPECT_EQ(cluts.twoBit[2], white);
  EXPECT_EQ(cluts.fourBit[2], white);
  EXPECT_EQ(cluts.eightBit[2], white);
  EXPECT_EQ(cluts.fourBit[9], before.fourBit[9]);
}

}  // namespace
}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle
