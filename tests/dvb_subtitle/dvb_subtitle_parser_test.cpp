// SPDX-License-Identifier: MIT
#include "dvb_subtitle/dvb_subtitle_parser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "dvb_subtitle/errors.h"
#include "tests/dvb_subtitle/decoder_bench.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::ThrowsMessage;

// A display of one row filled with a colour of the default 4-bit CLUT.
DvbEncoder filled(std::uint8_t code, std::uint8_t state = kAcquisitionPoint,
                  std::uint8_t timeOut = 5) {
  return DvbEncoder()
      .display(3, 1)
      .page(state, timeOut, {{1, 0, 0}})
      .region({.id = 1, .fill = true, .width = 3, .height = 1, .fillCode = code});
}

// A region of three pixels with objects 7, at (1, 0), and 8, of a kind that is not supported.
const Bytes kRegionWithABadObject{1, 0, 0,    3, 0, 1, 0x48, 0, 0,    0,  //
                                  0, 7, 0x00, 1, 0, 0, 0,    8, 0x10, 0, 0, 0};

class DvbSubtitleParserTest : public testing::Test, protected DecoderBench {};

TEST_F(DvbSubtitleParserTest, ShowsAPageForItsTime) {
  feed(filled(1), 10);
  const auto page = at(10);
  EXPECT_EQ(page.visible, 1);
  EXPECT_EQ(page.start, 10 * kSecond);
  EXPECT_EQ(page.end, 15 * kSecond);
  EXPECT_EQ(page.pageState, 0);
  EXPECT_EQ(at(15).pixels, page.pixels) << "its end counts, and pixels are shared";
  EXPECT_TRUE(parser().hasChanged());

  for (const auto& empty : {atTicks(15 * kSecond + 1), at(9)}) {
    EXPECT_EQ(empty.visible, 0);
    EXPECT_EQ(empty.width, 0U);
    EXPECT_EQ(empty.aspectNumerator, 1U);
    EXPECT_EQ(empty.aspectDenominator, 1U);
    EXPECT_EQ(empty.pixels->size(), 0U);
    EXPECT_EQ(empty.start + empty.end, 0U);
    EXPECT_EQ(empty.pageState, -1);
  }

  feed(filled(2, kAcquisitionPoint, 0), 20);
  EXPECT_EQ(shownAt(20), "GGG") << "without a time-out for one moment";
  EXPECT_EQ(atTicks(20 * kSecond + 1).visible, 0);
}

TEST_F(DvbSubtitleParserTest, PrefersTheLaterPageAndForgetsOldOnes) {
  feed(filled(1), 10);
  feed(filled(2), 12);
  EXPECT_EQ(shownAt(11), "RRR");
  EXPECT_EQ(shownAt(12), "GGG");
  EXPECT_EQ(at(12).pageState, 1);
  feed(filled(4), 12);
  EXPECT_EQ(shownAt(12), "BBB") << "same start";
  feed(DvbEncoder(), 15);
  EXPECT_EQ(shownAt(11), "RRR") << "five seconds old, not older";
  feed(DvbEncoder(), 16);
  EXPECT_EQ(shownAt(11), "");
  EXPECT_EQ(shownAt(16), "BBB");
}

// Buffers are used again once nobody holds them: nothing of an old page may be left in a new one,
// and nothing may happen to one that somebody kept.
TEST_F(DvbSubtitleParserTest, PaintsEveryPageOnACleanDisplay) {
  SubtitleBitmap kept;
  for (std::uint64_t time = 10; time < 60; ++time) {
    const auto row = static_cast<std::uint16_t>(time % 3);
    feed(DvbEncoder()
             .display(2, 3)
             .page(kAcquisitionPoint, 5, {{1, 0, row}})
             .region({.id = 1, .fill = true, .width = 2, .height = 1, .fillCode = 1}),
         time);
    EXPECT_EQ(shownAt(time), row == 0 ? "RR/../.." : row == 1 ? "../RR/.." : "../../RR");
    if (time == 12) kept = at(time);
  }
  EXPECT_EQ(textOf(kept), "RR/../..");
}

TEST_F(DvbSubtitleParserTest, KeepsTheFirstPageOfAPayload) {
  feed(filled(1).page(kNormalCase, 9, {}).page(kNormalCase, 9, {{1, 0, 0}}), 10);
  EXPECT_EQ(shownAt(10), "RRR");
  feed(DvbEncoder().page(kNormalCase, 5, {{1, 0, 0}}), 12);
  EXPECT_EQ(at(12).pageState, 3) << "the others were counted";
}

TEST_F(DvbSubtitleParserTest, WaitsForAnAcquisitionPoint) {
  feed(filled(1, kNormalCase), 10);
  EXPECT_EQ(shownAt(10), "");
  EXPECT_THAT(log(), IsEmpty());
  feed(filled(2, kModeChange), 11);
  EXPECT_EQ(shownAt(11), "GGG");
  feed(DvbEncoder().page(kNormalCase, 5, {{1, 1, 0}}), 12);
  EXPECT_EQ(shownAt(12), ".GG") << "regions go on in a normal case";
}

TEST_F(DvbSubtitleParserTest, DropsAPageThatStaysIncomplete) {
  feed(DvbEncoder().page(kAcquisitionPoint, 5, {{1, 0, 0}, {4, 0, 0}}).end(), 10);
  feed(filled(1), 11);
  feed(DvbEncoder()
           .page(kAcquisitionPoint, 5, {{1, 0, 0}})
           .region({.id = 1, .objects = {{300, 0, 0}}}),
       12);
  feed(filled(2), 13);
  EXPECT_THAT(log(),
              ElementsAre("subtitle page dropped because region 1 was expected but missing",
                          "subtitle page dropped because object 300 was expected in region 1 but "
                          "missing"));
  EXPECT_EQ(droppedPages(), 2U);
  EXPECT_EQ(shownAt(11), "RRR");
  EXPECT_EQ(shownAt(13), "GGG");
}

TEST_F(DvbSubtitleParserTest, CompletesAPageInALaterPayload) {
  feed(DvbEncoder().display(2, 1).page(kAcquisitionPoint, 5, {{1, 0, 0}}), 10);
  feed(DvbEncoder().region({.id = 1, .objects = {{3, 0, 0}}}), 11);
  EXPECT_EQ(shownAt(11), "");
  feed(DvbEncoder().pictureObject(3, 4, picture("12")), 12);
  EXPECT_EQ(shownAt(12), "RG");
  EXPECT_EQ(at(12).start, 10 * kSecond);
}

TEST_F(DvbSubtitleParserTest, AddsToARegionUnlessItIsFilled) {
  auto region = DvbEncoder::Region{.id = 1, .width = 3, .height = 1, .objects = {{1, 0, 0}}};
  feed(DvbEncoder()
           .display(3, 1)
           .page(kAcquisitionPoint, 9, {{1, 0, 0}})
           .region(region)
           .pictureObject(1, 4, picture("1"))
           .pictureObject(2, 4, picture("2")),
       10);
  region.objects = {{2, 2, 0}};
  feed(DvbEncoder().region(region).page(kNormalCase, 9, {{1, 0, 0}}), 11);
  region.fill = true;
  feed(DvbEncoder().region(region).page(kNormalCase, 9, {{1, 0, 0}}), 12);
  EXPECT_EQ(shownAt(10), "R..");
  EXPECT_EQ(shownAt(11), "R.G");
  EXPECT_EQ(shownAt(12), "..G");
}

TEST_F(DvbSubtitleParserTest, KeepsClutsWhereRegionsAndObjectsStartAfresh) {
  feed(filled(1).clut(1, {{.id = 1, .y = 235}}), 10);
  feed(DvbEncoder()
           .page(kAcquisitionPoint, 5, {{1, 0, 0}})
           .region({.id = 1, .fill = true, .width = 1, .height = 1, .clut = 1, .fillCode = 1}),
       11);
  EXPECT_EQ(shownAt(11), "w..");
}

TEST_F(DvbSubtitleParserTest, FollowsTheFirstPageAndCertainSegmentsOfTheAncillaryPage) {
  parser().renderer().setAncillaryPage(9);
  feed(filled(1)
           .ofPage(2)
           .page(kNormalCase, 5, {})
           .segment(0x77, {})
           .ofPage(9)
           .page(kNormalCase, 5, {})
           .pictureObject(1, 4, picture("2")),
       10);
  feed(DvbEncoder().page(kNormalCase, 5, {{1, 0, 0}}).region({.id = 1, .objects = {{1, 0, 0}}}),
       11);
  EXPECT_EQ(shownAt(11), "RRR") << "the page composed before its region changed";
  feed(DvbEncoder().page(kNormalCase, 5, {{1, 0, 0}}), 12);
  EXPECT_EQ(shownAt(12), "G..");
  EXPECT_THAT(log(), IsEmpty());
}

TEST_F(DvbSubtitleParserTest, ContinuesSegmentsAcrossPayloads) {
  const Bytes field = filled(1).bytes();
  for (std::size_t cut = 0; cut <= field.size(); ++cut) {
    DecoderBench bench;
    const auto middle = field.begin() + static_cast<std::ptrdiff_t>(cut);
    bench.feed(Bytes(field.begin(), middle), 10);
    bench.feed(Bytes(middle, field.end()), 10, false);
    EXPECT_EQ(textOf(bench.at(10)), "RRR") << cut;
  }
  feed(Bytes(field.begin(), field.begin() + 9), 10);
  feed(field, 10, true);
  EXPECT_EQ(shownAt(10), "RRR") << "a discontinuity begins a field";
}

TEST_F(DvbSubtitleParserTest, RefusesABrokenDataField) {
  const auto feeding = [this](const Bytes& bytes, bool discontinuity = true) {
    return [=, this] { feed(bytes, 10, discontinuity); };
  };
  EXPECT_THAT(feeding({0x21}), ThrowsMessage<DataFieldError>("expected 0x20 in PES_Data_Field"));
  EXPECT_THAT(feeding({0x20, 0x01}),
              ThrowsMessage<DataFieldError>("expected 0x00 in PES_Data_Field"));
  Bytes field = filled(1).bytes();
  field.back() = 0x0E;
  EXPECT_THAT(feeding(field),
              ThrowsMessage<DataFieldError>("expected 0x0F or 0xFF in PES_Data_Field"));
  EXPECT_EQ(shownAt(10), "") << "the segments before go with it";
  EXPECT_THAT(feeding({0x20}, false),
              ThrowsMessage<DataFieldError>("expected 0x0F or 0xFF in PES_Data_Field"))
      << "the state stays";
  feed({0xFF}, 10, false);
  feed(filled(2).bytes(), 10, false);
  EXPECT_EQ(shownAt(10), "GGG");
}

TEST_F(DvbSubtitleParserTest, LosesOnlyTheSegmentThatItCannotDecode) {
  feed(DvbEncoder()
           .segment(0x15, {1, 2, 3})
           .region({.id = 1, .fill = true, .width = 9, .depth = 0})
           .segment(0x13, {0, 1, 0b1000, 0, 0})
           .segment(0x11, kRegionWithABadObject)
           .display(3, 1)
           .page(kNormalCase, 5, {})
           .segment(0x10, {5, 0b0100, 1, 2, 3, 4, 5}),
       10);
  EXPECT_THAT(log(),
              ElementsAre("Unsupported DVB subtitle segment (segment type = 21)",
                          "Unsupported region_depth = 0", "Unsupported object_coding_method 2",
                          "Unsupported object_provider_flag 1",
                          "40 dropped bytes at the end of page composition segment"));
  EXPECT_EQ(shownAt(10), "...") << "an acquisition point without regions";
}

// The region keeps its fields and the objects before the bad one; a bad depth leaves it alone.
TEST_F(DvbSubtitleParserTest, KeepsWhatABadSegmentHadStored) {
  feed(filled(1), 10);
  feed(DvbEncoder()
           .pictureObject(7, 4, picture("2"))
           .region({.id = 1, .fill = true, .width = 1, .height = 1, .depth = 5})
           .page(kNormalCase, 5, {{1, 0, 0}}),
       11);
  EXPECT_EQ(shownAt(11), "RRR");
  feed(DvbEncoder().segment(0x11, kRegionWithABadObject).page(kNormalCase, 5, {{1, 0, 0}}), 12);
  EXPECT_EQ(shownAt(12), ".G.");
}

TEST_F(DvbSubtitleParserTest, TriesAgainToPaintAPageThatFailed) {
  feed(smallPage(2, 1, {.objects = {{7, 0, 0}}}).object(7, {0x55}, {}).end(), 10);
  feed(DvbEncoder().pictureObject(7, 4, picture("1")), 11);
  EXPECT_THAT(log(), ElementsAre("Unsupported data_type = 85", "Unsupported data_type = 85"));
  EXPECT_EQ(shownAt(11), "R.");
  EXPECT_EQ(at(11).pageState, 2) << "every attempt counts";

  feed(smallPage(2, 1, {.objects = {{7, 0, 0}}}).object(7, {0x55}, {}), 12);
  feed(filled(2), 13);
  EXPECT_EQ(log().back(), "subtitle page dropped because ");
  EXPECT_EQ(shownAt(13), "GGG");
}

// What is left of an entry that is cut off is 0: object 0 at (0, 0).
TEST_F(DvbSubtitleParserTest, TakesAnObjectEntryThatIsCutOff) {
  feed(DvbEncoder()
           .display(3, 1)
           .page(kAcquisitionPoint, 5, {{1, 0, 0}})
           .segment(0x11, {1, 0, 0, 3, 0, 1, 0x48, 0, 0, 0, /**/ 0, 7, 0x00, 1, 0, 0, /**/ 9})
           .pictureObject(0, 4, picture("4"))
           .pictureObject(7, 4, picture("2")),
       10);
  EXPECT_EQ(shownAt(10), "BG.");
}

}  // namespace
}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle
