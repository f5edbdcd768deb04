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

// The set that a CLUT definition with these entries gives.
DVBClutSet defined(const std::vector<Entry>& entries) {
  constexpr std::size_t kBeforeSegment = 2;
  const auto bytes = DvbEncoder().clut(1, entries).bytes();
  util::BitReader reader({bytes.data() + kBeforeSegment, bytes.size() - kBeforeSegment - 1});
  readSegmentHeader(reader);
  return readClutDefinition(reader).cluts;
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

}  // namespace
}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle
