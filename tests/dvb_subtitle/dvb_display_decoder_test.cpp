// SPDX-License-Identifier: MIT
#include "dvb_subtitle/dvb_display_decoder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "testkit/encoders/video_builder.h"
#include "tests/dvb_subtitle/receiver_bench.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto kNormal = DvbEncoder::kNormalCase;

// A display of one row filled with a colour of the default 4-bit CLUT: 1 red, 2 green, 4 blue.
DvbEncoder filled(std::uint8_t code, std::uint8_t state = kAcquisitionPoint,
                  std::uint8_t timeOut = 5) {
  return DvbEncoder()
      .display(3, 1)
      .page(state, timeOut, {{1, 0, 0}})
      .region({.id = 1, .fill = true, .width = 3, .height = 1, .fillCode = code});
}

// A word in a region that is there already: the same object_id every time.
DvbEncoder word(std::uint16_t x, std::string_view codes) {
  return DvbEncoder()
      .page(kNormal, 9, {{1, 0, 0}})
      .region({.id = 1, .width = 4, .height = 1, .objects = {{7, x, 0}}})
      .pictureObject(7, 4, picture(codes))
      .end();
}

DvbEncoder line() {
  return DvbEncoder()
      .display(4, 1)
      .page(kModeChange, 9, {{1, 0, 0}})
      .region({.id = 1, .fill = true, .width = 4, .height = 1, .fillCode = 8});
}

// EN 300 743, clause 4: a region's pixels stay until they are painted over, whatever becomes of the
// object that painted them.
TEST(ReceivedDisplaySets, ShowEachWordAsItComesAndTheLastOne) {
  ReceiverBench bench;
  bench.feed(line().end(), 10)
      .feed(word(0, "1"), 11)
      .feed(word(1, "22"), 12)
      .feed(word(3, "4"), 13);
  EXPECT_THAT(bench.toldAtEnd(14), ElementsAre("10 KKKK", "11 RKKK", "12 RGGK", "13 RGGB", "22 -"));
  EXPECT_THAT(bench.log(), IsEmpty());
}

TEST(ReceivedDisplaySets, ThatEndAreShownAtOnceAndOthersWhenTheyAreWhole) {
  ReceiverBench bench;
  bench.feed(filled(1).end().page(kNormal, 5, {{1, 1, 0}}).end(), 10);
  EXPECT_THAT(bench.told, ElementsAre("10 RRR", "10 .RR")) << "two sets of one unit";
  bench.told.clear();
  bench.feed(filled(2), 11);
  EXPECT_THAT(bench.told, ElementsAre("11 GGG")) << "without an end, but whole";
  bench.told.clear();

  // EN 300 743, 7.1: a display set may be in several PES packets of one time.
  bench.feed(DvbEncoder().page(kAcquisitionPoint, 5, {{1, 0, 0}}), 12);
  bench.feed(DvbEncoder().region({.id = 1, .width = 2, .height = 1, .objects = {{3, 0, 0}}}), 12);
  EXPECT_THAT(bench.told, IsEmpty());
  bench.feed(DvbEncoder().pictureObject(3, 4, picture("12")), 12);
  EXPECT_THAT(bench.told, ElementsAre("12 RG."));
  EXPECT_THAT(bench.log(), IsEmpty());
}

// The unit of a later time, or the end of the stream, ends what nothing else does.
TEST(ReceivedDisplaySets, ShowWhatCameOfThem) {
  ReceiverBench bench;
  const auto holey = filled(1).region(
      {.id = 1, .fill = true, .width = 3, .height = 1, .fillCode = 2, .objects = {{300, 0, 0}}});
  bench.feed(holey, 10).feed(filled(4), 11);
  EXPECT_THAT(bench.told, ElementsAre("10 GGG", "11 BBB"));
  bench.feed(DvbEncoder().page(kNormal, 5, {{1, 2, 0}, {6, 0, 0}}), 12);
  EXPECT_THAT(bench.toldAtEnd(13), ElementsAre("10 GGG", "11 BBB", "12 ..B", "17 -"));
  EXPECT_THAT(bench.log(),
              ElementsAre("page shown without object 300 of region 1, which is missing",
                          "page shown without region 6, which is missing"));
}

// EN 300 743, 7.2.2: page_time_out.
TEST(ReceivedPages, GoWhenTheyTimeOut) {
  ReceiverBench bench;
  bench.feed(filled(1).end(), 10).feed(DvbEncoder().end(), 15);
  EXPECT_THAT(bench.told, ElementsAre("10 RRR", "15 -"));
  bench.told.clear();
  bench.feed(DvbEncoder().clut(0, {{.id = 1, .y = 235}}).end(), 16);
  EXPECT_THAT(bench.told, IsEmpty()) << "no page is valid any more";
  bench.feed(DvbEncoder().page(kNormal, 2, {{1, 0, 0}}).end(), 17);
  EXPECT_THAT(bench.toldAtEnd(18), ElementsAre("17 WWW", "19 -"));

  ReceiverBench atOnce;
  EXPECT_THAT(atOnce.feed(filled(1, kAcquisitionPoint, 0).end(), 10).toldAtEnd(20),
              ElementsAre("10 RRR", "10 -"));
}

TEST(ReceivedPages, WithNothingToSeeClearTheScreen) {
  ReceiverBench bench;
  bench.feed(DvbEncoder().page(kAcquisitionPoint, 5, {}).end(), 9);
  EXPECT_THAT(bench.told, IsEmpty()) << "it is clear already";
  bench.feed(filled(1).end(), 10).feed(DvbEncoder().page(kNormal, 5, {}).end(), 11);
  bench.feed(filled(2).end(), 12).feed(filled(0).end(), 13);
  EXPECT_THAT(bench.told, ElementsAre("10 RRR", "11 -", "12 GGG", "13 -"));
}

TEST(ReceivedPages, ThatShowTheSameGoOn) {
  ReceiverBench bench;
  bench.feed(filled(1).end(), 10).feed(filled(1, kModeChange).end(), 12);
  bench.feed(DvbEncoder().page(kNormal, 5, {{1, 0, 0}}).end().end(), 14);
  bench.feed(filled(2).end(), 16);
  ASSERT_EQ(bench.pictures.size(), 4U);
  EXPECT_EQ(bench.pictures[1].pageState, bench.pictures[0].pageState);
  EXPECT_EQ(bench.pictures[2].pageState, bench.pictures[0].pageState);
  EXPECT_EQ(bench.pictures[2].start, 10 * kSecond);
  EXPECT_EQ(bench.pictures[2].end, 19 * kSecond);
  EXPECT_NE(bench.pictures[3].pageState, bench.pictures[0].pageState);
}

// EN 300 743, 7.2.2: a decoder that has not seen the beginning of an epoch lacks what came before.
TEST(ReceivedPages, BeforeTheFirstAcquisitionPointAreShownWhenNothingIsMissing) {
  ReceiverBench bench;
  bench.feed(DvbEncoder().page(kNormal, 5, {{1, 0, 0}}).end(), 10);
  bench.feed(DvbEncoder()
                 .display(2, 1)
                 .page(kNormal, 5, {{1, 0, 0}})
                 .region({.id = 1, .width = 2, .height = 1, .objects = {{7, 0, 0}}})
                 .end(),
             11);
  EXPECT_THAT(bench.told, IsEmpty());
  bench.feed(DvbEncoder().page(kNormal, 5, {{1, 0, 0}}).pictureObject(7, 4, picture("12")).end(),
             12);
  EXPECT_THAT(bench.told, ElementsAre("12 RG"));
  EXPECT_THAT(bench.log(), IsEmpty());
}

// EN 300 743, 7.2.4. A CLUT colours what is painted already; a mode change forgets it (7.2.2).
TEST(ReceivedPages, TakeTheirColoursFromTheClutsOfTheEpoch) {
  ReceiverBench bench;
  const auto page = [](std::uint8_t state) {
    return DvbEncoder()
        .display(2, 1)
        .page(state, 9, {{1, 0, 0}})
        .region({.id = 1, .width = 2, .height = 1, .clut = 3, .objects = {{7, 0, 0}}});
  };
  const auto object = picture("12");
  bench.feed(page(kModeChange).pictureObject(7, 4, object).end(), 10);
  bench.feed(DvbEncoder().clut(3, {{.id = 1, .y = 235}}).end(), 11);
  bench.feed(DvbEncoder().clut(3, {{.id = 2, .y = 16}}).end(), 12);
  bench.feed(page(kAcquisitionPoint).pictureObject(7, 4, object).end(), 13);
  bench.feed(page(kModeChange).pictureObject(7, 4, object).end(), 14);
  EXPECT_THAT(bench.told, ElementsAre("10 RG", "11 WG", "12 WK", "13 WK", "14 RG"));
}

// EN 300 743, 7.2.1: addresses are relative to the display window; 7.2.3: objects are parts of
// their region.
TEST(ReceivedRegions, LieInTheWindowWithAllThatTheyShow) {
  const DvbEncoder field =
      DvbEncoder()
          .display(5, 4, DvbEncoder::Window{2, 4, 1, 3})
          .page(kAcquisitionPoint, 5, {{0, 1, 1}})
          .region({.fill = true, .width = 2, .height = 2, .fillCode = 1, .objects = {{7, 0, 1}}})
          .pictureObject(7, 4, picture("772"));
  EXPECT_EQ(received(field), "...../...../...RR/...WW");
  EXPECT_EQ(received(DvbEncoder()
                         .display(2, 2, DvbEncoder::Window{65535, 65535, 65535, 65535})
                         .page(kAcquisitionPoint, 5, {{0, 65535, 65535}})
                         .region({.fill = true, .width = 2, .height = 2, .fillCode = 1})),
            "");
}

TEST(ReceivedRegions, BeginInTheirBackgroundAndPaintInTheOrderOfTheirList) {
  const auto twice = DvbEncoder()
                         .display(4, 1)
                         .page(kAcquisitionPoint, 5, {{1, 0, 0}})
                         .region({.id = 1,
                                  .width = 4,
                                  .height = 1,
                                  .fillCode = 8,
                                  .objects = {{9, 0, 0}, {2, 1, 0}, {9, 3, 0}}})
                         .pictureObject(2, 4, picture("2"))
                         .pictureObject(9, 4, picture("11"));
  EXPECT_EQ(received(twice), "RGKR") << "object 9 in two places, under and beside object 2";

  ReceiverBench bench;
  bench.feed(twice, 10).feed(DvbEncoder().pictureObject(2, 4, picture("4")).end(), 11);
  EXPECT_THAT(bench.told, ElementsAre("10 RGKR", "11 RBKR")) << "an object that comes again";
}

// EN 300 743, 7.2.3: objects of characters have two pixel codes more in the list; objects that the
// receiver has itself (object_provider_flag 1) it may not have.
TEST(ReceivedRegions, PassOverObjectsThatAreNotPixels) {
  ReceiverBench bench;
  bench.feed(DvbEncoder()
                 .display(3, 1)
                 .page(kAcquisitionPoint, 5, {{1, 0, 0}})
                 .segment(0x11, {1, 0, 0,    3, 0, 1, 0x48,           0,    0, 0,  //
                                 0, 5, 0x40, 0, 0, 0, 0x01,           0x02,        // a character
                                 0, 6, 0x10, 0, 0, 0,  // of the receiver
                                 0, 7, 0x00, 1, 0, 0, /* cut off */ 0})
                 .characters(5, u"a")
                 .pictureObject(7, 4, picture("2"))
                 .end(),
             10);
  EXPECT_THAT(bench.told, ElementsAre("10 .G."));
  EXPECT_THAT(bench.log(), IsEmpty());
}

// EN 300 743, table 22: run_length_29-284.
TEST(ReceivedObjects, HaveRunsOf284Pixels) {
  const Bytes top{0x10, 0b00'00'11'11, 0b111111'01, 0b10'00'00'00};
  EXPECT_EQ(
      received(smallPage(286, 1, {.depth = 1, .objects = {{7, 0, 0}}}).object(7, top, {0xF0})),
      std::string(284, 'W') + "K.");
}

// Pixels without a run between them: the last ones lie outside, and must not reach the next row.
TEST(ReceivedObjects, OfSinglePixelsAreCutOffAndLeaveCode1) {
  const auto shownWith = [](bool nonModifyingColour) {
    const auto rows = picture("1231231231231/.............");
    return received(
        smallPage(12, 2, {.fill = true, .fillCode = 4, .objects = {{7, 2, 0}}})
            .object(7, encoders::fieldData(4, rows, 0), {0xF0, 0, 0, 0, 0, 0}, nonModifyingColour));
  };
  EXPECT_EQ(shownWith(false), "BBRGYRGYRGYR/BBBBBBBBBBBB");
  EXPECT_EQ(shownWith(true), "BBBGYBGYBGYB/BBBBBBBBBBBB");
}

// An encoder in the field counts the stuffing that makes the segment even as the bottom field's.
TEST(ReceivedObjects, MayHaveStuffingBetweenAndBehindTheirLines) {
  const auto field = [](const IndexedPicture& rows, std::uint32_t first) {
    Bytes data = encoders::fieldData(4, rows, first);
    data.push_back(0);
    return data;
  };
  const auto rows = picture("12/34");
  ReceiverBench bench;
  bench.feed(smallPage(2, 2, {.objects = {{7, 0, 0}}}).object(7, field(rows, 0), field(rows, 1)),
             10);
  EXPECT_THAT(bench.told, ElementsAre("10 RG/YB"));
  EXPECT_THAT(bench.log(), IsEmpty());
}

// Strings of a full row whose end code is missing, or half there (00 for 00 00): of 8 bits, of 4
// bits within a byte, and of 2 bits.
TEST(ReceivedObjects, MayLackTheEndOfAFullString) {
  const auto shownAs = [](std::uint8_t depth, std::uint16_t width, const Bytes& top) {
    return received(
        smallPage(width, 3, {.depth = depth, .objects = {{7, 0, 0}}}).object(7, top, {0xF0}));
  };
  EXPECT_EQ(shownAs(3, 2, {0x12, 0x11, 0x22, 0x00, 0xF0, 0x12, 0x22, 0x11, 0xF0}), "RG/../GR");
  EXPECT_EQ(shownAs(2, 3, {0x11, 0x12, 0x40, 0xF0, 0x11, 0x21, 0x40, 0xF0}), "RGB/.../GRB");
  EXPECT_EQ(shownAs(1, 4, {0x10, 0b01'10'11'01, 0xF0, 0x10, 0b10'10'10'10, 0xF0}),
            "WKgW/..../KKKK");
  // Pixels beyond the region are no end: the string goes on, and the line after it is in place.
  EXPECT_EQ(shownAs(3, 1, {0x12, 0x11, 0x22, 0x22, 0, 0, 0xF0, 0x12, 0x22, 0, 0, 0xF0}), "R/./G");
}

TEST(ReceivedObjects, ThatAreDamagedShowWhatComesBeforeAndTheRestOfThePage) {
  ReceiverBench bench;
  bench.feed(smallPage(2, 1, {.objects = {{7, 0, 0}, {8, 1, 0}}})
                 .object(7, {0x11, 0x10, 0x00, 0x55}, {0xF0})
                 .pictureObject(8, 4, picture("2"))
                 .end(),
             10);
  EXPECT_THAT(bench.told, ElementsAre("10 RG"));
  EXPECT_THAT(bench.log(), ElementsAre("Object 7 not painted to its end: Unsupported data_type = "
                                       "85"));
}

// EN 300 468, 6.2.41 and EN 300 743, 7.2: services of one PID, which may share an ancillary page.
TEST(ReceivedServices, HaveTheirOwnPageAndWhatTheyShare) {
  const Bytes field = filled(1)
                          .ofPage(2)
                          .page(kAcquisitionPoint, 5, {{1, 0, 0}})
                          .region({.id = 1, .width = 3, .height = 1, .objects = {{7, 0, 0}}})
                          .ofPage(9)
                          .page(kAcquisitionPoint, 5, {})
                          .pictureObject(7, 4, picture("124"))
                          .ofPage(1)
                          .end()
                          .ofPage(2)
                          .end()
                          .bytes();
  const auto told = [&](std::optional<DvbPages> pages) {
    ReceiverBench bench(pages);
    // The display definition is page 1's only.
    bench.feed(DvbEncoder(2).display(3, 1), 9).feed(field, 10);
    return bench.told;
  };
  EXPECT_THAT(told(DvbPages{1, 1}), ElementsAre("10 RRR"));
  EXPECT_THAT(told(DvbPages{2, 9}), ElementsAre("10 RGB"));
  EXPECT_THAT(told(DvbPages{3, 3}), IsEmpty());
  EXPECT_THAT(told({}), ElementsAre("10 RRR")) << "the first page that is composed";
}

TEST(ReceivedServices, TakeObjectsOfPagesThatShowNothingWhereNoPagesAreGiven) {
  ReceiverBench bench;
  bench.feed(smallPage(2, 1, {.objects = {{7, 0, 0}}})
                 .ofPage(9)
                 .pictureObject(7, 4, picture("12"))
                 .ofPage(1)
                 .end(),
             10);
  EXPECT_THAT(bench.told, ElementsAre("10 RG"));

  bench.feed(smallPage(2, 1, {.objects = {{7, 0, 0}}})
                 .pictureObject(7, 4, picture("21"))
                 .ofPage(2)
                 .page(kAcquisitionPoint, 5, {})
                 .pictureObject(7, 4, picture("44"))
                 .ofPage(1)
                 .end(),
             11);
  EXPECT_EQ(bench.told.back(), "11 GR") << "page 2 is a service of its own";
}

TEST(ReceivedFields, LoseOnlyWhatIsDamaged) {
  const Bytes whole = filled(1).end().bytes();
  const auto toldOf = [](const Bytes& field, const std::string& damage) {
    ReceiverBench bench;
    bench.feed(field, 10);
    EXPECT_EQ(bench.log(), damage.empty() ? std::vector<std::string>{} : std::vector{damage});
    return bench.told;
  };
  const auto shown = ElementsAre("10 RRR");
  const auto at = [&](std::size_t offset) {
    return whole.begin() + static_cast<std::ptrdiff_t>(offset);
  };
  const Bytes body(at(DvbEncoder::kBeforeSegments), whole.end() - DvbEncoder::kBehindSegments);
  const Bytes begin{0x20, 0x00};
  EXPECT_THAT(toldOf(encoders::join({begin, body}), ""), shown) << "no end marker";
  EXPECT_THAT(toldOf(encoders::join({begin, body, Bytes(7)}), ""), shown) << "zeros instead";
  EXPECT_THAT(toldOf(encoders::join({whole, Bytes{0xFF, 0xFF, 0x47}}), ""), shown) << "padding";
  EXPECT_THAT(toldOf(encoders::join({begin, Bytes{0xFF}, whole}), ""), shown) << "two fields";
  EXPECT_THAT(toldOf(encoders::join({begin, Bytes{1, 0x0F, 0x0F, 3}, body}),
                     "data field of DVB subtitles: 4 bytes at offset 2 are no whole segment and "
                     "passed over"),
              shown);
  EXPECT_THAT(toldOf(encoders::join({begin, Bytes{1, 0x0F, 0x11, 0, 1, 0, 0, 0x55}, body}),
                     "data field of DVB subtitles: 8 bytes at offset 2 are no whole segment and "
                     "passed over"),
              shown)
      << "what only looks like a segment";
  EXPECT_THAT(toldOf(encoders::join({begin, body, Bytes{0x0F, 0x13, 0, 1, 0, 9, 1, 2}}),
                     "data field of DVB subtitles: 8 bytes at offset 49 are no whole segment and "
                     "passed over"),
              shown);
  EXPECT_THAT(toldOf({0x21, 0x00, 0x0F},
                     "data field of DVB subtitles passed over: it does not begin with 0x20 0x00"),
              IsEmpty());
  EXPECT_THAT(toldOf(filled(1).segment(0x15, {1, 2}).segment(0x9A, {}).end().bytes(), ""), shown)
      << "types that are for others";
  EXPECT_THAT(toldOf(filled(1).segment(0x11, {1, 0, 0, 9, 0, 1, 0x48}).end().bytes(),
                     "Region composition segment cut off"),
              shown);
}

TEST(ReceivedFields, CostBoundedWorkAndMemory) {
  ReceiverBench bench;
  DvbEncoder large = DvbEncoder().display(4096, 4096).page(kAcquisitionPoint, 5, {{0, 0, 0}});
  for (std::uint8_t id = 0; id < 3; ++id)
    large.region({.id = id, .fill = true, .width = 4096, .height = 2048, .fillCode = 1});
  bench.feed(large, 10);
  EXPECT_THAT(bench.log(), ElementsAre("Region 2 of 4096 by 2048 pixels refused: all regions "
                                       "together exceed 16777216"));
  bench.log().clear();

  // Every display set asks for the whole picture again.
  DvbEncoder again;
  for (int i = 0; i < 200; ++i) again.clut(0, {{.id = 1, .y = 235}}).end();
  bench.feed(again, 11);
  EXPECT_EQ(bench.log().size(), 200U - 32);
  EXPECT_THAT(bench.log(), testing::Each("More to paint in one payload than any display can show"));

  // The next unit starts with a share of its own.
  bench.feed(filled(2).end(), 12);
  EXPECT_EQ(bench.told.back(), "12 GGG");
  bench.log().clear();
  bench.feed(DvbEncoder().display(65536, 65536).page(kNormal, 5, {{1, 0, 0}}).end(), 13);
  EXPECT_THAT(bench.log(), ElementsAre("Display of 65536 by 65536 pixels refused: more than "
                                       "16777216 pixels"));
}

}  // namespace
}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle
