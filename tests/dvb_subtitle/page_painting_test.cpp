// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "testkit/encoders/video_builder.h"
#include "tests/dvb_subtitle/decoder_bench.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle {
namespace {

// Codes of the default 4-bit CLUT: 1 red, 2 green, 3 yellow, 4 blue, 7 white, 8 black, F grey.

TEST(PagePainting, InterlacesTheFieldsOfEveryDepth) {
  const auto shownAs = [](std::uint8_t depth, unsigned bits, const IndexedPicture& object) {
    return shown(
        smallPage(6, 5, {.depth = depth, .objects = {{7, 1, 1}}}).pictureObject(7, bits, object));
  };
  EXPECT_EQ(shownAs(1, 2, picture("0120/3333/2001")), "....../..WK../.gggg./.K..W./......");
  EXPECT_EQ(shownAs(2, 4, picture("0120/777F/4008")), "....../..RG../.WWWg./.B..K./......");
  // 0x11, 0x22 and 0x77 of the 8-bit table are red, green and white.
  EXPECT_EQ(shownAs(3, 8, {3, 3, {0x11, 0x22, 0x77, 0x00, 0x77, 0x00, 0x22, 0x22, 0x22}}),
            "....../.RGW../..W.../.GGG../......");
}

TEST(PagePainting, RepeatsTheTopFieldWhereThereIsNoBottomField) {
  const auto top = encoders::fieldData(4, picture("12/00/34"), 0);
  EXPECT_EQ(shown(smallPage(2, 5, {.objects = {{7, 0, 0}}}).object(7, top, {})), "RG/RG/YB/YB/..");
}

TEST(PagePainting, FillsRegionsAndPaintsInTheOrderOfIds) {
  const DvbEncoder field =
      DvbEncoder()
          .display(6, 3)
          .page(kModeChange, 5, {{9, 3, 1}, {2, 1, 0}})
          .region({.id = 9, .fill = true, .width = 9, .height = 9, .fillCode = 4})
          .region({.id = 2,
                   .fill = true,
                   .width = 3,
                   .height = 2,
                   .depth = 1,
                   .fillCode = 2,
                   .objects = {{5, 0, 0}, {4, 1, 0}}})
          .pictureObject(5, 2, picture("11"))
          .pictureObject(4, 2, picture("33"));
  // Object 5 comes after object 4, region 9 after region 2, each cut off at the display's edge.
  EXPECT_EQ(shown(field), ".WWg../.WWBBB/...BBB");
}

TEST(PagePainting, ShiftsObjectsByTheWindowButNotFills) {
  const DvbEncoder field =
      DvbEncoder()
          .display(5, 4, DvbEncoder::Window{2, 4, 1, 3})
          .page(kAcquisitionPoint, 5, {{0, 1, 1}})
          .region({.fill = true, .width = 2, .height = 2, .fillCode = 1, .objects = {{7, 0, 0}}})
          .pictureObject(7, 4, picture("77"));
  EXPECT_EQ(shown(field), "...../.RR../.RRWW/...WW");
}

TEST(PagePainting, CutsRunsAtTheDisplayAndNeverAtTheRegion) {
  auto field = DvbEncoder()
                   .display(6, 2)
                   .page(kAcquisitionPoint, 5, {{0, 1, 0}})
                   .region({.width = 2, .height = 1, .objects = {{7, 0, 0}, {8, 4, 1}, {9, 9, 9}}})
                   .pictureObject(7, 4, picture("2222"))
                   .pictureObject(8, 4, picture("1111/1111"))
                   .pictureObject(9, 4, picture("4"));
  EXPECT_EQ(shown(field), ".GGGG./.GGGGR");
}

TEST(PagePainting, LeavesOutRunsBeyond280Pixels) {
  // 284 pixels of code 1 in a 2-bit string, then one of code 2; and the same with 280 pixels.
  const Bytes lost{0x10, 0b00'00'11'11, 0b111111'01, 0b10'00'00'00};
  const Bytes kept{0x10, 0b00'00'11'11, 0b111011'01, 0b10'00'00'00};
  const auto page = [](const Bytes& top) {
    return smallPage(282, 1, {.depth = 1, .objects = {{7, 0, 0}}}).object(7, top, {0xF0});
  };
  EXPECT_EQ(shown(page(lost)), "K" + std::string(281, '.'));
  EXPECT_EQ(shown(page(kept)), std::string(280, 'W') + "K.");
}

TEST(PagePainting, KeepsWhatIsUnderCode1OfANonModifyingObject) {
  auto region = DvbEncoder::Region{.fill = true, .fillCode = 4, .objects = {{7, 0, 0}}};
  const Bytes top = encoders::fieldData(4, picture("11221"), 0);
  EXPECT_EQ(shown(smallPage(5, 1, region).object(7, top, {0xF0}, true)), "BBGGB");
  EXPECT_EQ(shown(smallPage(5, 1, region).object(7, top, {0xF0}, false)), "RRGGR");
}

TEST(PagePainting, TakesColoursFromTheRegionsClut) {
  auto field = smallPage(3, 1, {.clut = 5, .objects = {{7, 0, 0}}})
                   .clut(5, {{.id = 1, .y = 235}, {.id = 2, .y = 16}})
                   .pictureObject(7, 4, picture("123"));
  EXPECT_EQ(shown(field), "wkY") << "entry 3 is a default";
}

// A map that the top field changes holds for the bottom field too, and no longer for the next
// object.
TEST(PagePainting, MapsCodesUntilTheEndOfTheObject) {
  const Bytes string{0x10, 0b01'10'00'00, 0x00};  // codes 1 and 2
  const Bytes withMap{0x20, 0x01, 0x2F, 0x10, 0b01'10'00'00, 0x00};
  auto field = smallPage(5, 2, {.objects = {{1, 0, 0}, {2, 3, 0}}})
                   .object(1, withMap, string)
                   .object(2, string, string);
  EXPECT_EQ(shown(field), "RG.WK/RG.WK");

  Bytes fourBitMap(16);
  fourBitMap[1] = 0x22;
  fourBitMap[15] = 0x11;
  const Bytes toEightBit = encoders::join({Bytes{0x21, 0x00, 0x11, 0x22, 0x00}, string,  //
                                           Bytes{0x22}, fourBitMap, Bytes{0x11, 0x1F, 0x00}});
  EXPECT_EQ(
      shown(smallPage(4, 1, {.depth = 3, .objects = {{1, 0, 0}}}).object(1, toEightBit, {0xF0})),
      "RGGR");
}

TEST(PagePainting, PaintsNothingForCharacters) {
  auto field =
      smallPage(2, 1, {.fill = true, .fillCode = 2, .objects = {{1, 0, 0}}}).characters(1, u"Hi");
  EXPECT_EQ(shown(field), "GG");
}

TEST(PagePainting, MarksTheRowsItTouches) {
  DecoderBench bench;
  bench.feed(smallPage(4, 9, {.fill = true, .fillCode = 0, .objects = {{1, 0, 3}}})
                 .pictureObject(1, 4, picture("1010/0011")),
             10);
  EXPECT_EQ(bench.at(10).pixels->paintedRows(), (PixelBuffer::RowRange{3, 5}));
  EXPECT_EQ(bench.shownAt(10), "..../..../..../R.R./..RR/..../..../..../....");
}

// Transparent black counts where something else was before.
TEST(PagePainting, ErasesWhatAnEarlierRegionPainted) {
  auto field = DvbEncoder()
                   .display(4, 3)
                   .page(kAcquisitionPoint, 5, {{1, 0, 0}, {2, 1, 0}})
                   .region({.id = 1, .fill = true, .width = 4, .height = 2, .fillCode = 1})
                   .region({.id = 2, .fill = true, .width = 2, .height = 3, .fillCode = 0});
  EXPECT_EQ(shown(field), "R..R/R..R/....");
}

TEST(PagePainting, GivesAnEmptyPageADisplayOfNothing) {
  DecoderBench bench;
  bench.feed(DvbEncoder().page(kAcquisitionPoint, 5, {}), 10);
  const auto bitmap = bench.at(10);
  EXPECT_EQ(bitmap.visible, 1);
  EXPECT_EQ(bitmap.width, 720U);
  EXPECT_EQ(bitmap.height, 576U);
  EXPECT_EQ(bitmap.pixels->size(), 720U * 576 * 4);
  EXPECT_THAT(bitmap.pixels->bytes(), testing::Each(0));
}

TEST(PagePainting, KnowsTheAspectRatio) {
  const auto ratio = [](DecoderBench& bench, std::uint32_t width, std::uint32_t height) {
    bench.feed(smallPage(width, height, {}), 10);
    const auto bitmap = bench.at(10);
    return std::pair(bitmap.aspectNumerator, bitmap.aspectDenominator);
  };
  DecoderBench unknown;
  EXPECT_EQ(ratio(unknown, 720, 576), std::pair(5U, 4U));
  EXPECT_EQ(ratio(unknown, 1920, 1080), std::pair(16U, 9U));
  DecoderBench known;
  known.parser().renderer().setPictureAspectRatio(32, 18);
  EXPECT_EQ(ratio(known, 720, 576), std::pair(16U, 9U));
}

}  // namespace
}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle
