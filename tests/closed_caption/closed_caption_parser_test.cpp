// SPDX-License-Identifier: MIT
#include "closed_caption/closed_caption_parser.h"

#include <gmock/gmock.h>

#include <string>

#include "testkit/encoders/caption_builder.h"

namespace korr::encoding::subtitling::closed_caption {
namespace {

using encoders::CaptionBuilder;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::string textOf(const CaptionText::TextRun& run) {
  std::string text;
  for (const auto& glyph : run.glyphs) text += glyph.view();
  return text;
}

// One caption service, fed by builders, each call a unit of its own.
class Service {
 public:
  explicit Service(std::uint32_t number, bool publishEachPair = false)
      : parser_(CaptionService::fromNumber(number), publishEachPair) {}

  Service& feed(CaptionBuilder builder) {
    const auto triplets = builder.take();
    parser_.parse(triplets.data(), static_cast<std::int64_t>(triplets.size()), ++time_, true);
    return *this;
  }

  CaptionText screen() { return *parser_.currentSubtitle(time_).captionText(); }

  // "row:text" for each row, runs parted by a bar.
  std::vector<std::string> rows() {
    std::vector<std::string> result;
    for (const auto& row : screen().rows) {
      std::string text = std::to_string(row.number).append(":");
      for (std::size_t i = 0; i < row.runs.size(); ++i)
        text.append(i == 0 ? "" : "|").append(textOf(row.runs[i]));
      result.push_back(text);
    }
    return result;
  }

  ClosedCaptionParser& parser() { return parser_; }
  MediaTime time() const { return time_; }

 private:
  ClosedCaptionParser parser_;
  MediaTime time_ = 0;
};

CaptionBuilder popOn(int row = 15, std::uint8_t attribute = 0x10) {
  return CaptionBuilder().resumeCaptionLoading().preamble(row, attribute);
}

// The runs of the row that a caption of one row makes of `codes`.
std::vector<CaptionText::TextRun> runsOf(CaptionBuilder codes) {
  const auto rows = Service(1).feed(codes.endOfCaption()).screen().rows;
  return rows.empty() ? std::vector<CaptionText::TextRun>{} : rows.front().runs;
}

std::string firstText(const CaptionBuilder& codes) {
  return textOf(runsOf(codes).at(0));
}

TEST(CaptionIntake, IgnoresInvalidTripletsDtvccAndTrailingBytes) {
  auto bytes = popOn().text("Hi").endOfCaption().take();
  ClosedCaptionParser parser(CaptionService::fromNumber(1));
  for (const int header : {0xF8, 0xFE, 0xFF}) {  // not valid; DTVCC
    auto other = bytes;
    for (std::size_t i = 0; i < other.size(); i += 3) other[i] = static_cast<std::uint8_t>(header);
    parser.parse(other.data(), static_cast<std::int64_t>(other.size()), 1, true);
    EXPECT_FALSE(parser.hasChanged());
  }
  parser.parse(bytes.data(), static_cast<std::int64_t>(bytes.size()) - 1, 2, true);
  EXPECT_FALSE(parser.hasChanged()) << "the cut triplet held the end of the caption";
  parser.parse(nullptr, 0, 3, true);
}

TEST(CaptionIntake, FollowsTheChannelOfTheLastControlCode) {
  Service second(2);
  second.feed(CaptionBuilder(1, 2).resumeCaptionLoading().preamble(15))
      .feed(CaptionBuilder(1, 1).resumeCaptionLoading().text("no"))
      .feed(CaptionBuilder(1, 2).control(0x17, 0x21).text("ok").endOfCaption());
  EXPECT_THAT(second.rows(), ElementsAre("15:ok"));
}

TEST(CaptionIntake, SuppressesRepeatedCodesOfTheFirstField) {
  // Carriage returns tell how often they ran: each but the first rolls the text up by one.
  const auto rowAfter = [](int copies) {
    Service it(1);
    it.feed(CaptionBuilder().rollUp(4).preamble(15).text("A"));
    CaptionBuilder returns;
    for (int i = 0; i < copies; ++i) returns.carriageReturn();
    return it.feed(returns).screen().rows.at(0).number;
  };
  EXPECT_EQ(rowAfter(1), 14);
  EXPECT_EQ(rowAfter(2), 14) << "the second copy is dropped";
  EXPECT_EQ(rowAfter(3), 13) << "the third runs again";

  Service first(1);
  first.feed(CaptionBuilder().rollUp(4).carriageReturn().text("A").carriageReturn());
  EXPECT_THAT(first.rows(), IsEmpty()) << "text between two equal codes does not part them";
}

TEST(CaptionIntake, ReadsTheMiscellaneousCodesOfTheSecondField) {
  // Field 2 sends 0x15 where field 1 sends 0x14 (CEA-608, 8.4.1).
  Service third(3);
  third.feed(CaptionBuilder(2).pair(0x15, 0x25).pair(0x15, 0x2D).text("A"));
  third.feed(CaptionBuilder(2).pair(0x15, 0x2D).pair(0x15, 0x2D));
  EXPECT_THAT(third.rows(), ElementsAre("13:A")) << "equal codes in a row all run";
  third.feed(CaptionBuilder(2).text("a").pair(0x14, 0x30).pair(0x15, 0x2D));
  EXPECT_THAT(third.rows(), ElementsAre("12:A", "14:Ä")) << "0x14 becomes 0x13, an extended set";
}

TEST(CaptionDecoder, ShowsAPopOnCaptionAtItsEnd) {
  Service service(1);
  service.feed(popOn().text("HI"));
  EXPECT_FALSE(service.parser().hasChanged());
  EXPECT_THAT(service.rows(), IsEmpty());

  service.feed(CaptionBuilder().endOfCaption());
  EXPECT_TRUE(isEmpty(service.parser().currentSubtitle(service.time() - 1)));
  EXPECT_TRUE(service.parser().hasChanged()) << "an answer for another time clears nothing";
  CaptionText expected;
  expected.rows = {{{{.glyphs = {GlyphText('H'), GlyphText('I')}}}, CaptionMode::PopOn, 15}};
  EXPECT_EQ(service.screen(), expected);
  EXPECT_FALSE(service.parser().hasChanged()) << "taking the screen clears the flag";

  service.feed(CaptionBuilder().resumeCaptionLoading().endOfCaption());
  EXPECT_THAT(service.rows(), IsEmpty()) << "the memories changed places";
}

TEST(CaptionDecoder, RollsUpAtCarriageReturns) {
  Service service(1);
  const auto line = [](const char* text) { return CaptionBuilder().text(text).carriageReturn(); };
  service.feed(CaptionBuilder().rollUp(2).carriageReturn());
  // A code of no effect parts the equal carriage returns.
  const auto apart = CaptionBuilder().control(0x14, 0x28);
  service.feed(apart).feed(line("A"));
  EXPECT_THAT(service.rows(), ElementsAre("14:A"));
  service.feed(apart).feed(line("B"));
  EXPECT_THAT(service.rows(), ElementsAre("13:A", "14:B"));
  service.feed(apart).feed(line("C"));
  EXPECT_THAT(service.rows(), ElementsAre("13:B", "14:C")) << "two rows and no more";
  service.feed(CaptionBuilder().preamble(2).text("D").carriageReturn());
  EXPECT_THAT(service.rows(), ElementsAre("13:C", "14:|D")) << "a preamble writes to row 15";
}

TEST(CaptionDecoder, PublishesEachPairOnRequest) {
  Service service(1, true);
  service.feed(CaptionBuilder().rollUp(3).preamble(15).text("AB"));
  EXPECT_TRUE(service.parser().hasChanged());
  EXPECT_THAT(service.rows(), ElementsAre("14:AB"));
}

TEST(CaptionDecoder, WritesPaintOnTextLikePopOnText) {
  Service service(1);
  service.feed(CaptionBuilder().resumeDirectCaptioning().preamble(1).text("AB"));
  EXPECT_FALSE(service.parser().hasChanged());
  service.feed(CaptionBuilder().endOfCaption());
  EXPECT_THAT(service.rows(), ElementsAre("1:AB"));
}

TEST(CaptionDecoder, DropsTextWithoutAStyleOrARow) {
  Service service(1);
  service.feed(CaptionBuilder().preamble(15).text("no").control(0x14, 0x24));
  service.feed(CaptionBuilder().resumeCaptionLoading().text("no").control(0x11, 0x30));
  service.feed(popOn().text("ok").control(0x14, 0x2A).text("no").preamble(3).text("no"));
  service.feed(CaptionBuilder().endOfCaption());
  EXPECT_THAT(service.rows(), ElementsAre("15:ok"));
}

// Paint-on captions go on for days without a code that erases the memory that they are written to.
TEST(CaptionDecoder, StopsTakingTextIntoAMemoryThatNobodyErases) {
  Service service(1);
  service.feed(CaptionBuilder().resumeDirectCaptioning());
  const auto more =
      CaptionBuilder().preamble(15).text("0123456789").preamble(14).text("0123456789");
  for (std::size_t cells = 0; cells < 2 * CaptionDecoder::kMostCells; cells += 22) {
    service.feed(more);
  }
  service.feed(CaptionBuilder().preamble(13).text("no").endOfCaption());
  std::size_t glyphs = 0;
  for (const auto& row : service.screen().rows) {
    for (const auto& run : row.runs) glyphs += run.glyphs.size();
  }
  EXPECT_LE(glyphs, CaptionDecoder::kMostCells);
  EXPECT_GT(glyphs, CaptionDecoder::kMostCells / 2);

  service.feed(CaptionBuilder().eraseNonDisplayedMemory().preamble(15).text("ok").endOfCaption());
  EXPECT_THAT(service.rows(), ElementsAre("15:ok"));
}

TEST(CaptionDecoder, ErasesEitherMemory) {
  Service service(1);
  service.feed(popOn().text("A").endOfCaption().eraseDisplayedMemory());
  EXPECT_TRUE(service.parser().hasChanged());
  EXPECT_THAT(service.rows(), IsEmpty());
  service.feed(popOn().text("B").eraseNonDisplayedMemory().text("C"));
  EXPECT_FALSE(service.parser().hasChanged());
  service.feed(CaptionBuilder().endOfCaption());
  EXPECT_THAT(service.rows(), IsEmpty());
}

TEST(CaptionDecoder, TakesBackCharactersAcrossRuns) {
  EXPECT_EQ(firstText(popOn().text("AB").preamble(15, 0x12).backspace().text("C")), "A");
  EXPECT_EQ(firstText(popOn().text("A").control(0x12, 0x30)), "À");
  EXPECT_EQ(firstText(popOn().control(0x13, 0x2C).text("x")), "‸x");
  EXPECT_EQ(firstText(popOn().text("A").control(0x11, 0x37)), "A♪");
}

TEST(CaptionDecoder, PlacesPreambles) {
  for (int row = 1; row <= 15; ++row) {
    Service service(1);
    service.feed(popOn(row, 0x00).text("x").endOfCaption());
    EXPECT_EQ(service.screen().rows.at(0).number, row);
  }
  for (std::uint8_t attribute = 0; attribute < 0x20; ++attribute) {
    CaptionText::TextRun expected;
    expected.underline = attribute % 2 != 0;
    if (attribute < 0x0E) {
      expected.foreground = static_cast<CaptionColour>(attribute / 2 + 1);
    } else if (attribute < 0x10) {
      expected.italic = true;
    } else {
      expected.column = 4u * ((attribute - 0x10u) / 2);
    }
    EXPECT_THAT(runsOf(popOn(5, attribute)), ElementsAre(expected)) << int{attribute};
  }
}

TEST(CaptionDecoder, ChangesStylesInRuns) {
  EXPECT_EQ(runsOf(popOn().text("A").preamble(15, 0x1E).text("B")).size(), 2u)
      << "a preamble that names the row again";

  // White underlined, then white again: the underline stays, so nothing changes.
  auto runs =
      runsOf(popOn(15, 0x14).text("A").control(0x11, 0x21).text("B").control(0x11, 0x20).text("C"));
  ASSERT_EQ(runs.size(), 2u);
  EXPECT_EQ(textOf(runs[1]), "BC");
  EXPECT_TRUE(runs[1].underline);
  EXPECT_EQ(runs[1].column, 8u) << "that of the run before, whatever text it holds";

  runs = runsOf(popOn().control(0x11, 0x28).control(0x11, 0x2E).text("A"));
  ASSERT_EQ(runs.size(), 1u) << "an empty run takes the style over";
  EXPECT_EQ(runs[0].foreground, CaptionColour::Red);
  EXPECT_TRUE(runs[0].italic);

  runs = runsOf(popOn().text("A").control(0x17, 0x23).text("B"));
  ASSERT_EQ(runs.size(), 1u) << "a tab alone never moves the pen";

  const CaptionText::TextRun expected{.glyphs = {},
                                      .foreground = CaptionColour::Black,
                                      .background = CaptionColour::Blue,
                                      .backgroundOpacity = CaptionOpacity::SemiTransparent,
                                      .doubleSize = 1,
                                      .underline = true};
  runs = runsOf(popOn().text("A").control(0x10, 0x25).control(0x17, 0x25).control(0x17, 0x2F));
  ASSERT_EQ(runs.size(), 2u);
  EXPECT_EQ(runs[1], expected);
  runs = runsOf(popOn().control(0x17, 0x2D).control(0x17, 0x25).control(0x17, 0x24));
  EXPECT_EQ(runs[0].backgroundOpacity, CaptionOpacity::Transparent);
  EXPECT_EQ(runs[0].doubleSize, 0u);
}

TEST(CaptionCharacters, FollowTheTables) {
  const auto set = [](std::uint8_t b1, std::uint8_t first) {
    std::string text;
    for (int b2 = first; b2 < 0x40; ++b2) {
      // The letter that an extended character takes back.
      auto codes = popOn();
      if (b1 != 0x11) codes.text("x");
      text += firstText(codes.control(b1, static_cast<std::uint8_t>(b2)));
    }
    return text;
  };
  EXPECT_EQ(set(0x11, 0x30), "®°½¿™¢£♪à èâêîôû");
  EXPECT_EQ(set(0x12, 0x20), "ÁÉÓÚÜü‘¡*'—©℠•“”ÀÂÇÈÊËëÎÏïÔÙùÛ«»");
  EXPECT_EQ(set(0x13, 0x20), "ÃãÍÌìÒòÕõ{}\\‸_ǀ~ÄäÖöß¥¤|ÅåØø⌜⌝⌞⌟");

  std::string basic;
  for (int code = 0x20; code < 0x80; ++code) basic += static_cast<char>(code);
  EXPECT_EQ(firstText(popOn().text(basic)),
            " !\"#$%&'()á+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[é]íóú"
            "abcdefghijklmnopqrstuvwxyzç÷Ññ█");
}

}  // namespace
}  // namespace korr::encoding::subtitling::closed_caption
